#pragma once
// A Preprocessor on a double of the link, and a double of a host's words.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "com/object.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::test {

// What a handler answers.
struct Answer {
    bool handled = true;
    bool result = true;
    std::wstring value = {};
    HRESULT code = S_OK;
};

// Words of a host. `onCall` is told the number and the parameters.
class FakeExtension final : public com::Object<FakeExtension, com::Dual<IPreprocessorExtension>> {
public:
    static constexpr com::ClassDescription kClass{};

    std::function<Answer(long number, IFlatCollection* parameters)> onCall;

    STDMETHODIMP DirectiveHandler(IKelCommunicator*, long number, IFlatCollection* parameters,
                                  VARIANT_BOOL* handled, VARIANT_BOOL* result) override;
    STDMETHODIMP FunctionHandler(IKelCommunicator*, long number, IFlatCollection* parameters,
                                 BSTR* value, VARIANT_BOOL* handled, VARIANT_BOOL* result) override;
};

class PreprocessorTest : public testing::Test {
protected:
    PreprocessorTest();

    // Runs a script that does not fail as a call; true when every line ran.
    bool run(std::string_view script);
    bool runWide(std::wstring_view script);

    bool isReading() const;
    bool isCancelled() const;

    // The message of the last diagnostic of the last run.
    std::string lastDiagnostic() const;
    com::ComPtr<FakeExtension> install(const wchar_t* word, bool isFunction = false);

    // What an error report does on the stream.
    static std::string report(std::string_view message, std::string_view part = {});

    FakeLink link_;
    com::ComPtr<IPreprocessorControl> preprocessor_;
};

}  // namespace kel::test
