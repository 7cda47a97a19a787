#pragma once
// The events of the preprocessor, as a host listens to them.

#include <windows.h>

#include <ocidl.h>

#include <cstddef>
#include <functional>
#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::host {

// The members of _IPreprocessorEvents.
enum ScriptEvent : DISPID {
    kRunStarted = 1,
    kRunEnded = 2,
    kLineStarted = 3,
    kLineSent = 4,
    kDirectiveStarted = 5,
    kVariableSet = 6,
    kErrorFound = 7
};

// The arguments of an event, in the order of its declaration. Reading one that is not there, or of
// another kind, throws com::Error.
class EventArguments {
public:
    explicit EventArguments(const DISPPARAMS& parameters) : parameters_(parameters) {}

    std::wstring text(UINT index) const;
    std::string utf8(UINT index) const;
    std::size_t number(UINT index) const;
    com::ComPtr<IFlatCollection> collection(UINT index) const;

private:
    const VARIANT& at(UINT index) const;

    const DISPPARAMS& parameters_;
};

// Listens to the preprocessor while it lives.
class ScriptEvents {
public:
    // Called in the middle of a run. What it throws goes to the preprocessor, which does not care.
    using Listener = std::function<void(ScriptEvent event, const EventArguments& arguments)>;

    // Throws com::Error.
    ScriptEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, Listener listener);
    ~ScriptEvents();
    ScriptEvents(const ScriptEvents&) = delete;
    ScriptEvents& operator=(const ScriptEvents&) = delete;

private:
    com::ComPtr<IConnectionPoint> source_;
    DWORD cookie_ = 0;
};

}  // namespace kel::host
