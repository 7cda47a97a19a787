#pragma once
// The class table of a module: one row for each creatable class, with its cached class factory.

#include <windows.h>

#include <unknwn.h>

#include <span>

namespace kel::com {

struct ClassRow {
    // Name of the class, as in KelUtils.<name>.1.
    const wchar_t* name;
    const CLSID* identifier;

    // Id of the resource that holds the class's registry script; 0 where a module has none.
    UINT registryScript;

    // Makes an object and asks it for an interface. `result` is not null and has been set to null.
    HRESULT (*createInstance)(const ClassRow& row, IUnknown* outer, REFIID iid, void** result);

    // Made at the first request and held until the module is detached; does not count as a lock.
    IClassFactory* factory = nullptr;
};

// Gives an interface of a class's factory: what DllGetClassObject answers. Any thread.
HRESULT classObject(std::span<ClassRow> table, REFCLSID identifier, REFIID iid,
                    void** result) noexcept;

// Releases the cached factories.
void releaseFactories(std::span<ClassRow> table) noexcept;

// Adapts the creator of a component to a row.
template <HRESULT (*create)(IUnknown*, REFIID, void**) noexcept>
HRESULT rowCreator(const ClassRow&, IUnknown* outer, REFIID iid, void** result) {
    return create(outer, iid, result);
}

}  // namespace kel::com
