#pragma once
// The place that a container has given a control.

#include <windows.h>

#include <ocidl.h>
#include <oleidl.h>

#include <optional>

#include "com/error.h"
#include "com/variant.h"

namespace kel::ole {

// Containers differ in what they offer; nothing here takes anything for granted.
class Site {
public:
    void set(IOleClientSite* site) { site_ = site; }
    IOleClientSite* get() const { return site_.Get(); }

    // An interface of the site; null where it does not offer it.
    template <class Interface>
    com::ComPtr<Interface> as() const {
        com::ComPtr<Interface> offered;
        if (site_) site_.As(&offered);
        return offered;
    }

    // An ambient property converted to a type; nothing where the container does not offer it so.
    std::optional<com::Variant> ambient(DISPID property, VARTYPE type) const;

    // False while the form that the control stands on is being designed.
    bool isInUse() const;
    // True when the container wants no answer to the user for now.
    bool isDead() const;

private:
    com::ComPtr<IOleClientSite> site_;
};

}  // namespace kel::ole
