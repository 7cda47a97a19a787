#pragma once
// The libraries under test as a host sees them that does without registration: loaded from the
// build folder.

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "com/error.h"

namespace kel::test {

// An export of a module. Throws when there is none.
void* exportOf(HMODULE module, const char* name);

template <class Function>
Function* exportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(exportOf(module, name));
}

// A COM server; stays loaded. After each test it must have no object left.
class Library {
public:
    // `path`: below the build folder. Throws com::Error when it cannot be loaded.
    explicit Library(const wchar_t* path);

    HMODULE module() const { return module_; }
    std::wstring path() const;

    HRESULT classObject(REFCLSID identifier, REFIID iid, void** result) const;
    HRESULT canUnloadNow() const;

    // A new object of one of its classes, or a part of another one. Throws com::Error when it
    // cannot be made.
    template <class Interface>
    com::ComPtr<Interface> create(REFCLSID identifier, IUnknown* outer = nullptr) const {
        com::ComPtr<IClassFactory> factory;
        com::check(classObject(identifier, IID_PPV_ARGS(&factory)));
        com::ComPtr<Interface> object;
        com::check(factory->CreateInstance(outer, IID_PPV_ARGS(&object)));
        return object;
    }

    // All that were loaded.
    static std::vector<const Library*>& loaded();

private:
    HMODULE module_;
};

const Library& kelUtils();
const Library& benchLink();
const Library& kelTrace();

// What a failing call published. Takes it: a second question finds nothing.
struct PublishedError {
    std::wstring description;
    std::wstring source;
    IID interfaceId;
};
std::optional<PublishedError> takeError();

}  // namespace kel::test
