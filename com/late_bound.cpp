#include "com/late_bound.h"

#include <vector>

#include "com/text.h"

namespace kel::com {
namespace {

// What a failing member told; its texts are freed in any case.
class Told {
public:
    Told() = default;
    ~Told() {
        for (const BSTR text : {told_.bstrSource, told_.bstrDescription, told_.bstrHelpFile})
            SysFreeString(text);
    }
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;

    EXCEPINFO* put() { return &told_; }

    [[noreturn]] void raise(HRESULT code) {
        if (told_.pfnDeferredFillIn) told_.pfnDeferredFillIn(&told_);
        const bool hasCode = code == DISP_E_EXCEPTION && FAILED(told_.scode);
        throw Error(hasCode ? told_.scode : code, std::wstring(view(told_.bstrDescription)));
    }

private:
    EXCEPINFO told_{};
};

}  // namespace

Variant LateBound::invoke(const wchar_t* name, WORD kind,
                          std::initializer_list<Variant> arguments) const {
    LPOLESTR names = const_cast<LPOLESTR>(name);
    DISPID member = 0;
    check(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member));
    return invokeMember(member, kind, arguments);
}

Variant LateBound::invokeMember(DISPID member, WORD kind,
                                std::initializer_list<Variant> arguments) const {
    // The last one comes first; what is held is still the caller's.
    std::vector<VARIANT> values;
    for (auto argument = std::rbegin(arguments); argument != std::rend(arguments); ++argument)
        values.push_back(argument->get());
    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = kind == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{values.data(), isPut ? &put : nullptr, static_cast<UINT>(values.size()),
                          isPut ? 1u : 0u};
    Variant result;
    Told told;
    const HRESULT code = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                                         isPut ? nullptr : result.put(), told.put(), nullptr);
    if (FAILED(code)) told.raise(code);
    return result;
}

}  // namespace kel::com
