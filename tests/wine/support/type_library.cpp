#include "tests/wine/support/type_library.h"

#include "com/text.h"
#include "tests/wine/support/library.h"

namespace kel::test {

TYPEATTR attributesOf(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    com::check(type->GetTypeAttr(&attributes));
    const TYPEATTR copy = *attributes;
    type->ReleaseTypeAttr(attributes);
    return copy;
}

std::string nameOf(ITypeInfo* type, MEMBERID member) {
    com::Bstr name;
    com::check(type->GetDocumentation(member, name.put(), nullptr, nullptr, nullptr));
    return com::narrow(name.get());
}

com::ComPtr<ITypeInfo> implemented(ITypeInfo* type, UINT index) {
    HREFTYPE reference = 0;
    com::ComPtr<ITypeInfo> implemented;
    com::check(type->GetRefTypeOfImplType(index, &reference));
    com::check(type->GetRefTypeInfo(reference, &implemented));
    return implemented;
}

std::string kindOf(INVOKEKIND kind) {
    if (kind == INVOKE_FUNC) return "call ";
    if (kind == INVOKE_PROPERTYGET) return "get ";
    return kind == INVOKE_PROPERTYPUT ? "put " : "putref ";
}

std::vector<com::ComPtr<ITypeInfo>> libraryTypes() {
    com::ComPtr<ITypeLib> library;
    com::check(LoadTypeLibEx(kelUtils().path().c_str(), REGKIND_NONE, &library));
    std::vector<com::ComPtr<ITypeInfo>> all(library->GetTypeInfoCount());
    for (UINT i = 0; i < all.size(); ++i)
        com::check(library->GetTypeInfo(i, &all[i]));
    return all;
}

std::vector<com::ComPtr<ITypeInfo>> levelsOf(com::ComPtr<ITypeInfo> type) {
    std::vector<com::ComPtr<ITypeInfo>> levels;
    if (attributesOf(type.Get()).typekind == TKIND_DISPATCH)
        type = implemented(type.Get(), static_cast<UINT>(-1));
    for (;; type = implemented(type.Get(), 0)) {
        const GUID identifier = attributesOf(type.Get()).guid;
        if (identifier == IID_IDispatch || identifier == IID_IUnknown) return levels;
        levels.push_back(type);
    }
}

void forEachMember(const com::ComPtr<ITypeInfo>& type, const Look& look) {
    for (const com::ComPtr<ITypeInfo>& level : levelsOf(type)) {
        for (UINT i = 0; i < attributesOf(level.Get()).cFuncs; ++i) {
            FUNCDESC* function = nullptr;
            com::check(level->GetFuncDesc(i, &function));
            look(level.Get(), *function);
            level->ReleaseFuncDesc(function);
        }
    }
}

}  // namespace kel::test
