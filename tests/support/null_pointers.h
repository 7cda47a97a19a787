#pragma once
// Calls every member of a dual interface without a place for one of its results: it must refuse.

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

#include "com/error.h"
#include "com/text.h"

namespace kel::test {

// One member, called with zeros of the right size once for each out parameter, which has no place
// while the others have. Names the parameters that were not refused.
inline std::string callWithNothing(IUnknown* object, ITypeInfo* type, const FUNCDESC& function) {
    const std::size_t count = static_cast<std::size_t>(function.cParams);
    std::string faults;
    com::Bstr name;
    UINT names = 0;
    type->GetNames(function.memid, name.put(), 1, &names);
    const auto isOut = [&](std::size_t i) {
        return function.lprgelemdescParam[i].paramdesc.wParamFlags & PARAMFLAG_FOUT;
    };
    for (std::size_t missing = 0; missing < count; ++missing) {
        if (!isOut(missing)) continue;
        std::vector<VARTYPE> types;
        std::vector<VARIANT> places(count), values(count);
        std::vector<VARIANT*> arguments;
        for (std::size_t i = 0; i < count; ++i) {
            const VARTYPE kind = function.lprgelemdescParam[i].tdesc.vt;
            types.push_back(kind == VT_PTR ? VARTYPE{VT_I4} : kind);
            if (isOut(i) && i != missing) values[i].byref = &places[i];
            arguments.push_back(&values[i]);
        }
        VARIANT code{};
        com::check(DispCallFunc(object, function.oVft, CC_STDCALL, VT_ERROR, function.cParams,
                                types.data(), arguments.data(), &code));
        if (code.scode != E_POINTER)
            faults += com::narrow(name.view()) + " " + std::to_string(missing) + "; ";
    }
    return faults;
}

// `object` is the dual interface that `type` describes, as its QueryInterface gives it. Empty when
// all is refused.
inline std::string acceptedNullPointers(IUnknown* object, com::ComPtr<ITypeInfo> type) {
    std::string faults;
    // From the dispatch view to the table of members, then down to IDispatch.
    for (int base = -1;; base = 0) {
        HREFTYPE reference = 0;
        com::ComPtr<ITypeInfo> next;
        com::check(type->GetRefTypeOfImplType(static_cast<UINT>(base), &reference));
        com::check(type->GetRefTypeInfo(reference, &next));
        type = next;
        TYPEATTR* attributes = nullptr;
        com::check(type->GetTypeAttr(&attributes));
        const bool isOurs = attributes->guid != IID_IDispatch;
        const UINT count = isOurs ? attributes->cFuncs : 0u;
        type->ReleaseTypeAttr(attributes);
        if (!isOurs) return faults;
        for (UINT i = 0; i < count; ++i) {
            FUNCDESC* function = nullptr;
            com::check(type->GetFuncDesc(i, &function));
            faults += callWithNothing(object, type.Get(), *function);
            type->ReleaseFuncDesc(function);
        }
    }
}

}  // namespace kel::test
