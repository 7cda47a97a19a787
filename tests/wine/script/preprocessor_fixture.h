#pragma once
// A Preprocessor on a double of the link.

#include <gtest/gtest.h>

#include <string_view>

#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::test {

class PreprocessorTest : public testing::Test {
protected:
    PreprocessorTest() { com::check(preprocessor_->put_Communicator(link_.communicator())); }

    // True when every line ran; `code` is that of the call.
    bool run(std::string_view script, HRESULT code = S_OK) {
        VARIANT_BOOL result = 7;
        EXPECT_EQ(preprocessor_->PreprocessAndRun(com::Bstr(script).get(), &result), code);
        EXPECT_TRUE(result == VARIANT_TRUE || result == VARIANT_FALSE) << result;
        return result == VARIANT_TRUE;
    }

    FakeLink link_;
    com::ComPtr<IPreprocessorControl> preprocessor_ =
        kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
};

}  // namespace kel::test
