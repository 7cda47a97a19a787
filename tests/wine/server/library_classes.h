#pragma once
// The classes of the type library. type_library.txt tells which there have to be, and whether each
// is made.

#include <string>
#include <vector>

#include "tests/wine/support/type_library.h"

namespace kel::test {

struct LibraryClass {
    com::ComPtr<ITypeInfo> type;
    std::string name;
    CLSID identifier;
    bool isCreatable;  // as the type library tells
    HRESULT code;      // that its factory gives

    // "default IThis, IThat, default source IEvents"
    std::string interfaces;
    std::vector<IID> answered;  // of these, by its objects
    IID events{};

    std::wstring program() const;
};
std::vector<LibraryClass> libraryClasses();

// S_OK for those that are built, E_NOTIMPL for those that are registered but refuse to be created.
std::vector<LibraryClass> classesThatGive(HRESULT code);

// An identifier as text with braces, in upper case.
std::string toText(const GUID& identifier);

}  // namespace kel::test
