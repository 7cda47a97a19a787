#pragma once
// What a session knows of every object that it wraps.

#include <windows.h>

#include <oaidl.h>

#include <memory>
#include <optional>
#include <string>

#include "com/error.h"
#include "hosts/trace/mobility.h"
#include "hosts/trace/model/event.h"

namespace kel::trace {

class Session;

class TracedObject {
public:
    // `inner` is the object that is wrapped, null in a replay; `self` the wrapper's own count.
    TracedObject(std::shared_ptr<Session> session, std::string name, IUnknown* inner,
                 IUnknown* self);
    virtual ~TracedObject();
    TracedObject(const TracedObject&) = delete;
    TracedObject& operator=(const TracedObject&) = delete;

    // The traced object behind an interface; null when it is none of this module's.
    static TracedObject* from(IUnknown* object);

    const std::string& name() const { return name_; }
    Session& session() const { return *session_; }
    const std::shared_ptr<Session>& sharedSession() const { return session_; }
    IUnknown* innerObject() const { return inner_.Get(); }
    IUnknown* self() const { return self_; }

    // The wrapper itself.
    virtual IUnknown* wrapper() = 0;
    // How the wrapper goes to other threads, where it goes as what it wraps does.
    virtual Mobility mobility() const { return {}; }

    // While it is recorded: the object is about to tell a sink of an event.
    virtual void eventComes(DISPID, const DISPPARAMS*) {}

    // Members for replays. A text of the echo is shown in the host's window.
    virtual void show(const std::wstring&) {}
    // True when the object's waits run the message loop.
    virtual bool runsMessages() const { return true; }
    // The link ran a script: hands it to the host's preprocessor.
    virtual void runScript(const std::wstring&) {}
    // The object told a sink of an event. Nothing where there is no such sink.
    virtual std::optional<EventAnswered> fire(const EventFired&) { return std::nullopt; }
    // A call on the object left a piece of a file. Why that cannot be done again; empty when it is.
    virtual std::string leave(const FilePiece&) { return {}; }

private:
    const std::shared_ptr<Session> session_;
    const std::string name_;
    const com::ComPtr<IUnknown> inner_;
    IUnknown* const self_;
};

// Tells the traced objects of this module from all others.
struct ITraced : public IUnknown {
    STDMETHOD_(TracedObject*, traced)() = 0;
};

}  // namespace kel::trace

__CRT_UUID_DECL(kel::trace::ITraced, 0x11ABF4B9, 0xE4A5, 0x46F2, 0xB2, 0xC9, 0x14, 0x74, 0x8B, 0xC2,
                0xCB, 0x9E)
