#include "tests/wine/support/type_library.h"

#include "tests/wine/support/library.h"

namespace kel::test {

std::string kindOf(INVOKEKIND kind) {
    if (kind == INVOKE_FUNC) return "call ";
    if (kind == INVOKE_PROPERTYGET) return "get ";
    return kind == INVOKE_PROPERTYPUT ? "put " : "putref ";
}

com::ComPtr<ITypeInfo> namedType(ITypeInfo* declaredBy, const TYPEDESC& passed) {
    if (passed.vt == VT_PTR) return namedType(declaredBy, *passed.lptdesc);
    com::ComPtr<ITypeInfo> type;
    if (passed.vt == VT_USERDEFINED) com::check(declaredBy->GetRefTypeInfo(passed.hreftype, &type));
    return type;
}

std::vector<com::ComPtr<ITypeInfo>> libraryTypes() {
    com::ComPtr<ITypeLib> library;
    com::check(LoadTypeLibEx(kelUtils().path().c_str(), REGKIND_NONE, &library));
    std::vector<com::ComPtr<ITypeInfo>> all(library->GetTypeInfoCount());
    for (UINT i = 0; i < all.size(); ++i)
        com::check(library->GetTypeInfo(i, &all[i]));
    return all;
}

}  // namespace kel::test
