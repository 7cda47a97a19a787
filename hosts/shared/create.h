#pragma once
// Making registered components.

#include <string>

#include "com/error.h"

namespace kel::host {

// What the user is told about a component that cannot be made.
struct ComponentNames {
    std::string component;
    std::string remedy;
};

// Both throw Failure (not registered).
CLSID classOf(const std::string& programIdentifier, const ComponentNames& names);
void createComponent(REFCLSID identifier, const ComponentNames& names, REFIID iid, void** result);

template <class Interface>
com::ComPtr<Interface> create(REFCLSID identifier, const ComponentNames& names) {
    com::ComPtr<Interface> component;
    createComponent(identifier, names, __uuidof(Interface), &component);
    return component;
}

template <class Interface>
com::ComPtr<Interface> create(const std::string& programIdentifier, const std::string& remedy) {
    const ComponentNames names{programIdentifier, remedy};
    return create<Interface>(classOf(programIdentifier, names), names);
}

}  // namespace kel::host
