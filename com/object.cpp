#include "com/object.h"

namespace kel::com {
namespace {

// Keeps the references that a destructor takes and drops from destroying the object again.
constexpr LONG kBeingDestroyed = 0x40000000;

}  // namespace

HRESULT ObjectCore::Inner::QueryInterface(REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid == IID_IUnknown) {
        *result = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    void* found = object_.findInterface(iid);
    if (!found) return object_.findElsewhere(iid, result);
    *result = found;
    object_.controlling()->AddRef();
    return S_OK;
}

ULONG ObjectCore::Inner::AddRef() {
    return InterlockedIncrement(&object_.references_);
}

ULONG ObjectCore::Inner::Release() {
    const LONG references = InterlockedDecrement(&object_.references_);
    if (references == 0) {
        object_.references_ = kBeingDestroyed;
        delete &object_;
    }
    return references;
}

HRESULT ObjectCore::findElsewhere(REFIID, void**) {
    return E_NOINTERFACE;
}

HRESULT classInfo(const ClassDescription& description, ITypeInfo** type) {
    return guard(IID_IProvideClassInfo2, description.programIdentifier, [&] {
        out(type) = nullptr;
        if (!description.identifier) throw Error(E_NOTIMPL);
        *type = typeInfo(*description.identifier).Detach();
    });
}

HRESULT defaultSource(const ClassDescription& description, DWORD kind, GUID* identifier) {
    return guard(IID_IProvideClassInfo2, description.programIdentifier, [&] {
        out(identifier) = GUID_NULL;
        if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) throw Error(E_INVALIDARG);
        if (!description.identifier) throw Error(E_NOTIMPL);

        const ComPtr<ITypeInfo> type = typeInfo(*description.identifier);
        constexpr INT kDefaultSource = IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE;
        for (UINT index = 0;; ++index) {
            INT flags = 0;
            if (FAILED(type->GetImplTypeFlags(index, &flags))) throw Error(E_UNEXPECTED);
            if ((flags & kDefaultSource) != kDefaultSource) continue;

            HREFTYPE reference = 0;
            check(type->GetRefTypeOfImplType(index, &reference));
            ComPtr<ITypeInfo> source;
            check(type->GetRefTypeInfo(reference, &source));
            TYPEATTR* attributes = nullptr;
            check(source->GetTypeAttr(&attributes));
            *identifier = attributes->guid;
            source->ReleaseTypeAttr(attributes);
            return;
        }
    });
}

HRESULT safetyOptions(const ClassDescription& description, bool isKnown, DWORD* supported,
                      DWORD* enabled) {
    return guard(IID_IObjectSafety, description.programIdentifier, [&] {
        out(supported) = 0;
        out(enabled) = 0;
        if (!isKnown) throw Error(E_NOINTERFACE);
    });
}

HRESULT refuseSafety(const ClassDescription& description, bool isKnown, DWORD wanted) {
    return guard(IID_IObjectSafety, description.programIdentifier, [&] {
        if (!isKnown) throw Error(E_NOINTERFACE);
        if (wanted != 0)
            throw Error(E_FAIL, L"The component is not safe for scripts that nobody trusts");
    });
}

}  // namespace kel::com
