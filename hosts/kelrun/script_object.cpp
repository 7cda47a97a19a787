#include "hosts/kelrun/script_object.h"

#include <algorithm>

#include "com/text.h"

namespace kel::kelrun {

HRESULT ScriptObject::GetTypeInfoCount(UINT* count) {
    return guarded<IDispatch>([&] { com::out(count) = 0; });
}

HRESULT ScriptObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                    DISPID* identifiers) {
    return guarded<IDispatch>([&] {
        if (!names || !identifiers || count != 1) return E_INVALIDARG;
        const auto found = std::ranges::find_if(
            members_, [&](const Member& member) { return com::sameName(member.name, names[0]); });
        if (found == members_.end()) return DISP_E_UNKNOWNNAME;
        *identifiers = static_cast<DISPID>(found - members_.begin());
        return S_OK;
    });
}

HRESULT ScriptObject::Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                             VARIANT* result, EXCEPINFO* exception, UINT*) {
    return guarded<IDispatch>([&] {
        if (!parameters) return E_INVALIDARG;
        if (member < 0 || static_cast<std::size_t>(member) >= members_.size() ||
            !(flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET))) {
            return DISP_E_MEMBERNOTFOUND;
        }
        const com::KeepAlive alive(*this);
        Arguments arguments;
        for (UINT i = parameters->cArgs; i > 0; --i)
            arguments.emplace_back(parameters->rgvarg[i - 1]);
        try {
            com::Variant value = members_[static_cast<std::size_t>(member)].function(arguments);
            if (result) *result = value.release();
            return S_OK;
        } catch (const com::Error& error) {
            if (!exception) throw;
            *exception = {};
            exception->scode = error.code();
            exception->bstrDescription = com::Bstr(com::textOfCurrentException()).release();
            return DISP_E_EXCEPTION;
        }
    });
}

}  // namespace kel::kelrun
