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
    com::ComPtr<IUnknown> (*make)(const std::shared_ptr<Session>& session, const std::string& name,
                                  IUnknown* inner);
};

std::span<const Kind> kinds();

// The wrapper of an object: the one that there is, or a new one. Throws com::Error for an object of
// no known kind.
com::ComPtr<IUnknown> wrap(const std::shared_ptr<Session>& session, IUnknown* inner);

// In a replay: the object with a recorded name; makes it when it is new.
com::ComPtr<IUnknown> replayed(const std::shared_ptr<Session>& session, const std::string& name);

// The communicator behind a wrapper; one that is not wrapped itself.
com::ComPtr<IKelCommunicator> innerOf(IKelCommunicator* communicator);

}  // namespace kel::trace
