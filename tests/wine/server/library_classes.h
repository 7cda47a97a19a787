#pragma once
// The classes of the type library. type_library.txt tells which there have to be, and which are
// refused.

#include <gtest/gtest.h>

#include "com/text.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {

struct LibraryClass {
    com::ComPtr<ITypeInfo> type;
    std::string name;
    CLSID identifier;
    bool isCreatable;  // as the type library tells

    // What is told where none is made.
    std::string refusal;

    // "default IThis, IThat, default source IEvents"
    std::string interfaces;
    std::vector<IID> answered;  // of these, by its objects
    IID events{};

    std::wstring program() const { return L"KelUtils." + com::widen(name) + L".1"; }
};

// An identifier as text with braces, in upper case.
inline std::string toText(const GUID& identifier) {
    return com::narrow(com::guidText(identifier));
}

// Why no object of a class is made, and who says so; empty where one is.
inline std::string refusalOf(REFCLSID identifier) {
    com::ComPtr<IClassFactory> factory;
    com::ComPtr<IDispatch> object;
    const HRESULT asked = kelUtils().classObject(identifier, IID_PPV_ARGS(&factory));
    if (!factory) return asked == CLASS_E_CLASSNOTAVAILABLE ? "without a factory" : "broken";
    const HRESULT code = factory->CreateInstance(nullptr, IID_PPV_ARGS(&object));
    EXPECT_EQ(code, object ? S_OK : E_NOTIMPL);
    if (object) return {};
    const auto told = takeError();
    if (!told || told->interfaceId != IID_IDispatch) return "refused without a reason";
    return com::narrow(told->source + L": " + told->description);
}

inline std::vector<LibraryClass> libraryClasses() {
    std::vector<LibraryClass> classes;
    for (const com::ComPtr<ITypeInfo>& type : libraryTypes()) {
        const TYPEATTR attributes = attributesOf(type.Get());
        if (attributes.typekind != TKIND_COCLASS) continue;
        LibraryClass& each = classes.emplace_back();
        each.type = type;
        each.name = nameOf(type.Get());
        each.identifier = attributes.guid;
        each.isCreatable = attributes.wTypeFlags & TYPEFLAG_FCANCREATE;
        each.refusal = refusalOf(attributes.guid);
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

// Those that are not only registered.
inline std::vector<LibraryClass> builtClasses() {
    std::vector<LibraryClass> classes = libraryClasses();
    std::erase_if(classes, [](const LibraryClass& each) { return !each.refusal.empty(); });
    return classes;
}

}  // namespace kel::test
