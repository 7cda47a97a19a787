#include "tests/wine/server/library_classes.h"

#include "com/text.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

HRESULT create(REFCLSID identifier) {
    com::ComPtr<IClassFactory> factory;
    com::ComPtr<IUnknown> object;
    const HRESULT code = kelUtils().classObject(identifier, IID_PPV_ARGS(&factory));
    return factory ? factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)) : code;
}

}  // namespace

std::wstring LibraryClass::program() const {
    return L"KelUtils." + com::widen(name) + L".1";
}

std::vector<LibraryClass> libraryClasses() {
    std::vector<LibraryClass> classes;
    for (const com::ComPtr<ITypeInfo>& type : libraryTypes()) {
        const TYPEATTR attributes = attributesOf(type.Get());
        if (attributes.typekind != TKIND_COCLASS) continue;
        LibraryClass& each = classes.emplace_back();
        each.type = type;
        each.name = nameOf(type.Get());
        each.identifier = attributes.guid;
        each.isCreatable = attributes.wTypeFlags & TYPEFLAG_FCANCREATE;
        each.code = create(attributes.guid);
        for (UINT i = 0; i < attributes.cImplTypes; ++i) {
            INT flags = 0;
            com::check(type->GetImplTypeFlags(i, &flags));
            const bool isSource = flags & IMPLTYPEFLAG_FSOURCE;
            const auto interfaceType = implemented(type.Get(), i);
            const IID identifier = attributesOf(interfaceType.Get()).guid;
            if (isSource) each.events = identifier;
            if (!isSource) each.answered.push_back(identifier);
            each.interfaces += std::string(i > 0 ? ", " : "") +
                               (flags & IMPLTYPEFLAG_FDEFAULT ? "default " : "") +
                               (isSource ? "source " : "") + nameOf(interfaceType.Get());
        }
    }
    return classes;
}

std::vector<LibraryClass> classesThatGive(HRESULT code) {
    std::vector<LibraryClass> classes = libraryClasses();
    std::erase_if(classes, [&](const LibraryClass& each) { return each.code != code; });
    return classes;
}

std::string toText(const GUID& identifier) {
    return com::narrow(com::guidText(identifier));
}

}  // namespace kel::test
