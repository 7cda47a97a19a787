#pragma once
// A double of a host's words.

#include <functional>
#include <string>
#include <utility>

#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::test {

class FakeExtension final : public com::Object<FakeExtension, com::Dual<IPreprocessorExtension>> {
public:
    static constexpr com::ClassDescription kClass{};

    // What it answers.
    bool handled = true;
    bool result = true;
    std::wstring value;
    // Is told the number of each word that is called, with names and values of its parameters.
    std::function<void(const std::string& call)> onCall = [](const std::string&) {};

    STDMETHODIMP DirectiveHandler(IKelCommunicator*, long number, IFlatCollection* parameters,
                                  VARIANT_BOOL* wasHandled, VARIANT_BOOL* wentWell) override {
        return guarded<IPreprocessorExtension>([&] {
            onCall(told(number, parameters));
            *wasHandled = com::variantBool(handled);
            *wentWell = com::variantBool(result);
        });
    }
    STDMETHODIMP FunctionHandler(IKelCommunicator* link, long number, IFlatCollection* parameters,
                                 BSTR* given, VARIANT_BOOL* wasHandled,
                                 VARIANT_BOOL* wentWell) override {
        *given = com::Bstr(std::wstring_view(value)).release();
        return DirectiveHandler(link, number, parameters, wasHandled, wentWell);
    }

private:
    static std::string told(long number, IFlatCollection* parameters) {
        std::string text = std::to_string(number);
        long count = 0;
        com::check(parameters->get_Count(&count));
        for (long i = 0; i < count; ++i) {
            com::Bstr name;
            com::Variant parameter;
            com::check(parameters->get_Name(i, name.put()));
            com::check(parameters->get_Item(com::Variant(i).get(), parameter.put()));
            text += " " + com::narrow(name.get()) + "=" + parameter.toText();
        }
        return text;
    }
};

}  // namespace kel::test
