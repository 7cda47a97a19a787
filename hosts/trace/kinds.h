#pragma once
// The kinds of objects that are wrapped.

#include <windows.h>

#include <span>

#include "hosts/trace/session.h"
#include "interfaces/KelUtils.h"

namespace kel::trace {

struct Kind {
    // How objects of the kind are named: serial for serial1, serial2...
    const char* name;
    // An object that answers this interface is of the kind, when no kind before it claims it.
    const IID* interfaceId;
    // The class under which KelUtils creates such objects; null when it creates none.
    const CLSID* classId;
    // The mobility is a recorded one where there is nothing to wrap.
    com::ComPtr<IUnknown> (*make)(const std::shared_ptr<Session>& session, const std::string& name,
                                  IUnknown* inner, const Mobility& mobility);
};

std::span<const Kind> kinds();

// The wrapper of an object: the one that there is, or a new one. Throws com::Error for an object of
// no known kind.
com::ComPtr<IUnknown> wrap(const std::shared_ptr<Session>& session, IUnknown* inner);

// In a replay: the object with a recorded name; makes it when it is new.
com::ComPtr<IUnknown> replayed(const std::shared_ptr<Session>& session, const std::string& name,
                               const Mobility& mobility = {});

// The two ways of a new object into a recording and back: its name, and how it moves where it does.
Json::Array told(IUnknown* made);
com::ComPtr<IUnknown> replayed(const std::shared_ptr<Session>& session, const Json::Array& values);

// The communicator behind a wrapper; one that is not wrapped itself.
com::ComPtr<IKelCommunicator> innerOf(IKelCommunicator* communicator);

}  // namespace kel::trace
