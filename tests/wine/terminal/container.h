#pragma once
// A container that offers everything a control may ask for, and writes down what it is asked.

#include <windows.h>

#include <ocidl.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

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

    // The names of the calls of the control, in order. Ambient properties are not told.
    std::vector<std::string> calls;
    std::string takeCalls();
    // Runs inside each call, and gives what it answers.
    std::function<HRESULT(const std::string& call)> onCall;

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

    HRESULT told(const char* name);

    HWND window_;
    com::ComPtr<IOleInPlaceActiveObject> active_;
    com::ComPtr<Site> site_;
};

}  // namespace kel::test
