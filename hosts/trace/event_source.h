#pragma once
// The events of a traced object.

#include <ocidl.h>

#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "com/connection_point.h"
#include "hosts/trace/event_relay.h"
#include "hosts/trace/invocation.h"
#include "hosts/trace/session.h"

namespace kel::trace {

// A part of its wrapper, whose life it shares. The wrapped object keeps its own list of sinks, each
// behind a relay, and so decides who hears what, when and in which order; in a replay a list here
// takes its place.
class EventSource final : public IConnectionPointContainer {
    class Point;

public:
    // `source` is the dispatch interface that is traced; other connection points are passed on.
    EventSource(TracedObject& object, const IID& source) : object_(object), point_(*this, source) {}

    // False where the wrapped object has no events, and in a replay where nobody listened to it.
    bool isOffered() const;

    // In a replay: tells the sink of an event. Nothing where it is not there.
    std::optional<EventAnswered> fire(const EventFired& event) { return point_.fire(event); }

    // Stands for a call of the object that fires events, as long as it lasts.
    class Firing {
    public:
        explicit Firing(EventSource& events);
        ~Firing();
        Firing(const Firing&) = delete;
        Firing& operator=(const Firing&) = delete;

    private:
        Point& point_;
    };

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        return object_.wrapper()->QueryInterface(iid, result);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return object_.wrapper()->AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return object_.wrapper()->Release(); }
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** enumerator) override;
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

private:
    class Point final : public IConnectionPoint {
    public:
        Point(EventSource& container, const IID& source)
            : container_(container), source_(source), standIn_(container, source, true) {}

        // The point that takes the place of one of the wrapped object.
        com::ComPtr<IConnectionPoint> inPlaceOf(const com::ComPtr<IConnectionPoint>& inner);
        const IID& source() const { return source_; }
        std::optional<EventAnswered> fire(const EventFired& event);

        STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
        STDMETHODIMP_(ULONG) AddRef() override { return container_.AddRef(); }
        STDMETHODIMP_(ULONG) Release() override { return container_.Release(); }
        STDMETHODIMP GetConnectionInterface(IID* iid) override {
            return inner().GetConnectionInterface(iid);
        }
        STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
        // Both are calls of the session.
        STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
        STDMETHODIMP Unadvise(DWORD cookie) override;
        STDMETHODIMP EnumConnections(IEnumConnections** enumerator) override;

    private:
        HRESULT advise(IUnknown* sink, DWORD* cookie);
        HRESULT unadvise(DWORD cookie);
        // Nothing while a call fires.
        void forgetLeft();
        // The relay of a sink that is told of events; null when there is none.
        com::ComPtr<EventRelay> heard(std::int64_t number);
        IConnectionPoint& inner() { return inner_ ? *inner_.Get() : standIn_; }
        HRESULT call(const char* method, const std::function<HRESULT()>& forward,
                     DWORD* cookie) noexcept;

        EventSource& container_;
        const IID& source_;
        com::ComPtr<IConnectionPoint> inner_;
        std::mutex mutex_;  // of what follows, save the stand-in
        // So many sinks have been advised, ever.
        long count_ = 0;

        // In a replay. A source that tells all of an event tells also who leaves meanwhile, so none
        // is forgotten as long as a call fires.
        struct Known {
            DWORD cookie = 0;
            com::ComPtr<EventRelay> relay;
            bool hasLeft = false;
        };
        friend class Firing;
        com::ConnectionPoint standIn_;
        std::vector<Known> known_;
        int firing_ = 0;
    };

    com::ComPtr<IConnectionPointContainer> inner() const;

    TracedObject& object_;
    Point point_;
};

}  // namespace kel::trace
