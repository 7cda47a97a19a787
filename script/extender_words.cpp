#include "script/extender_words.h"

#include "com/late_bound.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::script {
namespace {

bool isNothing(const com::Variant& value) {
    return value.type() == VT_EMPTY || value.type() == VT_NULL;
}

}  // namespace

void ExtenderWords::setHandlers(IDispatch* directives, IDispatch* functions) {
    directives_ = directives;
    functions_ = functions;
}

int ExtenderWords::add(std::wstring name) {
    names_.push_back(std::move(name));
    return static_cast<int>(names_.size() - 1);
}

com::Variant ExtenderWords::ask(com::ComPtr<IDispatch> handler, long word,
                                IFlatCollection* parameters, VARTYPE wanted) {
    if (!handler) return {};
    const std::wstring name = names_.at(static_cast<std::size_t>(word));
    try {
        com::Variant answer = com::LateBound(std::move(handler))
                                  .callItself({com::Variant(std::wstring_view(name)),
                                               com::Variant(static_cast<IDispatch*>(parameters))});
        if (isNothing(answer)) return {};
        return answer.convertedTo(wanted);
    } catch (const com::Error& error) {
        // Some script engines tell the reason to their own host only.
        const std::wstring& reason = error.description();
        const std::wstring text = reason.empty() ? L"The handler of " + name + L" failed" : reason;
        preprocessor_.TellError(com::Bstr(text).get());
        throw;
    }
}

HRESULT ExtenderWords::DirectiveHandler(IKelCommunicator*, long directive,
                                        IFlatCollection* parameters, VARIANT_BOOL* handled,
                                        VARIANT_BOOL* result) {
    return guarded<IPreprocessorExtension>([&] {
        com::out(handled) = VARIANT_FALSE;
        com::out(result) = VARIANT_TRUE;
        const com::KeepAlive alive(*this);
        try {
            const com::Variant answer = ask(directives_, directive, parameters, VT_BOOL);
            if (answer.type() == VT_EMPTY) return;
            *handled = VARIANT_TRUE;
            *result = answer.get().boolVal;
        } catch (const com::Error&) {
            // It has been told, and ends the script as any error of a word does.
            *handled = VARIANT_TRUE;
            *result = VARIANT_FALSE;
        }
    });
}

HRESULT ExtenderWords::FunctionHandler(IKelCommunicator*, long function,
                                       IFlatCollection* parameters, BSTR* value,
                                       VARIANT_BOOL* handled, VARIANT_BOOL* result) {
    return guarded<IPreprocessorExtension>([&] {
        com::out(value) = nullptr;
        com::out(handled) = VARIANT_FALSE;
        com::out(result) = VARIANT_TRUE;
        const com::KeepAlive alive(*this);
        try {
            com::Variant answer = ask(functions_, function, parameters, VT_BSTR);
            if (answer.type() == VT_EMPTY) return;
            *value = answer.release().bstrVal;
            *handled = VARIANT_TRUE;
        } catch (const com::Error&) {
            *handled = VARIANT_TRUE;
            *result = VARIANT_FALSE;
        }
    });
}

}  // namespace kel::script
