#pragma once
// A container that offers everything a control may ask for.

#include <windows.h>

#include <ocidl.h>

#include <functional>
#include <map>
#include <string>

#include "com/object.h"
#include "com/variant.h"

namespace kel::test {

// A site, its frame and its sinks in one. It can be lent to one control at a time.
class Container {
public:
    Container();
    ~Container();
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    // Runs inside each call of the control, and gives what it answers. Ambient properties are not
    // told.
    std::function<HRESULT(const std::string& call)> onCall = [](const std::string&) {
        return S_OK;
    };

    // Deactivates what is active.
    void end();

    std::map<DISPID, com::Variant> ambients;
    RECT place{10, 20, 310, 220};
    RECT clip{0, 0, 600, 400};

    HWND window() const { return window_; }
    IOleClientSite* site() const;
    IPropertyNotifySink* propertySink() const;
    IAdviseSink* adviseSink() const;
    IOleInPlaceActiveObject* activeObject() const { return active_.Get(); }

private:
    class Site;

    HWND window_;
    com::ComPtr<IOleInPlaceActiveObject> active_;
    com::ComPtr<Site> site_;
};

}  // namespace kel::test
