#pragma once
// Calls every member of a dual interface without anything: whoever has a result must refuse it.

#include <gtest/gtest.h>
#include <windows.h>

#include <oleauto.h>

#include <vector>

#include "com/error.h"
#include "com/text.h"

namespace kel::test {

// One member, called with zeros of the right size; expects E_POINTER when it has an out parameter.
inline void callWithNothing(IDispatch* object, ITypeInfo* type, const FUNCDESC& function) {
    std::vector<VARTYPE> types;
    std::vector<VARIANT> values(static_cast<std::size_t>(function.cParams));
    std::vector<VARIANT*> arguments;
    bool hasResult = false;
    for (int i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const VARTYPE kind = parameter.tdesc.vt;
        hasResult |= (parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
        types.push_back(kind == VT_PTR ? VARTYPE{VT_I4} : kind);
        arguments.push_back(&values[i]);
    }
    if (!hasResult) return;
    com::Bstr name;
    UINT count = 0;
    type->GetNames(function.memid, name.put(), 1, &count);
    VARIANT code{};
    EXPECT_EQ(DispCallFunc(object, function.oVft, CC_STDCALL, VT_ERROR, function.cParams,
                           types.data(), arguments.data(), &code),
              S_OK);
    EXPECT_EQ(code.scode, E_POINTER) << com::narrow(name.view());
}

// `object` is the dual interface itself, as its QueryInterface gives it.
inline void expectNullPointersRefused(IDispatch* object) {
    com::ComPtr<ITypeInfo> type;
    ASSERT_EQ(object->GetTypeInfo(0, 0, &type), S_OK);
    // From the dispatch view to the table of members, then down to IDispatch.
    for (int base = -1;; base = 0) {
        HREFTYPE reference = 0;
        com::ComPtr<ITypeInfo> next;
        ASSERT_EQ(type->GetRefTypeOfImplType(static_cast<UINT>(base), &reference), S_OK);
        ASSERT_EQ(type->GetRefTypeInfo(reference, &next), S_OK);
        type = next;
        TYPEATTR* attributes = nullptr;
        ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
        const bool isOurs = attributes->guid != IID_IDispatch;
        const UINT count = isOurs ? attributes->cFuncs : 0u;
        type->ReleaseTypeAttr(attributes);
        if (!isOurs) return;
        for (UINT i = 0; i < count; ++i) {
            FUNCDESC* function = nullptr;
            ASSERT_EQ(type->GetFuncDesc(i, &function), S_OK);
            callWithNothing(object, type.Get(), *function);
            type->ReleaseFuncDesc(function);
        }
    }
}

}  // namespace kel::test
