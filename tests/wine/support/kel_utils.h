#pragma once
// KelUtils.dll as a host sees it that does without registration: loaded from the build folder.

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "com/error.h"

namespace kel::test {

// The library under test; stays loaded.
HMODULE kelUtils();
std::wstring kelUtilsPath();

// An export of a library. Throws when there is none.
void* exportOf(HMODULE library, const char* name);

template <class Function>
Function* exportOf(HMODULE library, const char* name) {
    return reinterpret_cast<Function*>(exportOf(library, name));
}

// DllGetClassObject and DllCanUnloadNow of the library under test.
HRESULT classObject(REFCLSID identifier, REFIID iid, void** result);
HRESULT canUnloadNow();

// A new object of a class of the library under test. Throws when it cannot be made.
template <class Interface>
com::ComPtr<Interface> create(REFCLSID identifier) {
    com::ComPtr<IClassFactory> factory;
    com::check(classObject(identifier, IID_PPV_ARGS(&factory)));
    com::ComPtr<Interface> object;
    com::check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
    return object;
}

// The lines of a text that is built into the test program as a resource (RCDATA).
std::vector<std::string> resourceLines(const wchar_t* name);

// What a failing call published. Takes it: a second question finds nothing.
struct PublishedError {
    std::wstring description;
    std::wstring source;
    IID interfaceId;
};
std::optional<PublishedError> takeError();

}  // namespace kel::test
