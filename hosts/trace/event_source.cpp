#include "hosts/trace/event_source.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "com/variant.h"
#include "hosts/trace/arguments.h"

namespace kel::trace {
namespace {

// What a connection leads to: the host's sink in place of its relay, in the form that was kept.
CONNECTDATA seenByHost(CONNECTDATA connection, REFIID source) {
    com::ComPtr<IEventRelay> relay;
    if (FAILED(connection.pUnk->QueryInterface(IID_PPV_ARGS(&relay)))) return connection;
    com::ComPtr<IUnknown> asSource;
    const bool hasSource = SUCCEEDED(
        connection.pUnk->QueryInterface(source, reinterpret_cast<void**>(asSource.GetAddressOf())));
    connection.pUnk = relay->target(hasSource ? source : IID_IDispatch);
    return connection;
}

}  // namespace

com::ComPtr<IConnectionPointContainer> EventSource::inner() const {
    com::ComPtr<IConnectionPointContainer> container;
    if (object_.innerObject()) object_.innerObject()->QueryInterface(IID_PPV_ARGS(&container));
    return container;
}

bool EventSource::isOffered() const {
    if (object_.session().isReplay()) return object_.session().tells(object_, "Advise");
    return static_cast<bool>(inner());
}

HRESULT EventSource::EnumConnectionPoints(IEnumConnectionPoints** enumerator) {
    return com::guard(IID_IConnectionPointContainer, nullptr, [&] {
        com::out(enumerator) = nullptr;
        std::vector<com::ComPtr<IConnectionPoint>> points;
        if (const auto container = inner()) {
            com::ComPtr<IEnumConnectionPoints> inners;
            const HRESULT code = container->EnumConnectionPoints(&inners);
            if (FAILED(code)) return code;
            for (com::ComPtr<IConnectionPoint> each; inners->Next(1, &each, nullptr) == S_OK;)
                points.push_back(point_.inPlaceOf(each));
        } else {
            points.emplace_back(&point_);
        }
        *enumerator = com::enumerate(points);
        return S_OK;
    });
}

HRESULT EventSource::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    return com::guard(IID_IConnectionPointContainer, nullptr, [&] {
        com::out(point) = nullptr;
        com::ComPtr<IConnectionPoint> found;
        if (const auto container = inner()) {
            const HRESULT code = container->FindConnectionPoint(iid, &found);
            if (FAILED(code)) return code;
            found = point_.inPlaceOf(found);
        } else if (iid == point_.source()) {
            found = &point_;
        } else {
            return CONNECT_E_NOCONNECTION;
        }
        return found.CopyTo(point);
    });
}

com::ComPtr<IConnectionPoint> EventSource::Point::inPlaceOf(
    const com::ComPtr<IConnectionPoint>& inner) {
    IID iid{};
    com::check(inner->GetConnectionInterface(&iid));
    if (iid != source_) return inner;
    const std::lock_guard lock(mutex_);
    if (!inner_) inner_ = inner;
    return this;
}

HRESULT EventSource::Point::QueryInterface(REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IConnectionPoint) return E_NOINTERFACE;
    *result = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

HRESULT EventSource::Point::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) return E_POINTER;
    return com::ComPtr<IConnectionPointContainer>(&container_).CopyTo(container);
}

HRESULT EventSource::Point::Advise(IUnknown* sink, DWORD* cookie) {
    return call(
        "Advise", [&] { return advise(sink, cookie); }, cookie);
}

HRESULT EventSource::Point::advise(IUnknown* sink, DWORD* cookie) {
    if (!sink) return inner().Advise(nullptr, cookie);
    TracedObject& object = container_.object_;
    long number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = count_ + 1;
    }
    const auto relay =
        com::makeObject<EventRelay>(object.sharedSession(), object.name(), source_, number, sink);
    const HRESULT code = inner().Advise(relay->controlling(), cookie);
    if (FAILED(code)) return code;
    const std::lock_guard lock(mutex_);
    ++count_;
    if (!inner_) known_.push_back({*cookie, relay});
    return code;
}

HRESULT EventSource::Point::Unadvise(DWORD cookie) {
    return call(
        "Unadvise", [&] { return unadvise(cookie); }, nullptr);
}

HRESULT EventSource::Point::unadvise(DWORD cookie) {
    const HRESULT code = inner().Unadvise(cookie);
    {
        const std::lock_guard lock(mutex_);
        for (Known& each : known_)
            if (each.cookie == cookie) each.hasLeft = true;
    }
    forgetLeft();
    return code;
}

// What the sinks do when they are released must not meet the list.
void EventSource::Point::forgetLeft() {
    std::vector<Known> left;
    const std::lock_guard lock(mutex_);
    if (firing_ > 0) return;
    std::ranges::copy_if(known_, std::back_inserter(left), &Known::hasLeft);
    std::erase_if(known_, [](const Known& each) { return each.hasLeft; });
}

EventSource::Firing::Firing(EventSource& events) : point_(events.point_) {
    const std::lock_guard lock(point_.mutex_);
    ++point_.firing_;
}

EventSource::Firing::~Firing() {
    {
        const std::lock_guard lock(point_.mutex_);
        --point_.firing_;
    }
    point_.forgetLeft();
}

HRESULT EventSource::Point::call(const char* method, const std::function<HRESULT()>& forward,
                                 DWORD* cookie) noexcept {
    return com::guard(IID_IConnectionPoint, nullptr, [&] {
        TracedObject& object = container_.object_;
        const com::ComPtr<IUnknown> alive = object.wrapper();
        Invocation made{object, IID_IConnectionPoint, "IConnectionPoint",
                        method, Treatment::kLocal,    forward};
        made.clear = [=] {
            if (cookie) *cookie = 0;
        };
        return object.session().perform(made);
    });
}

HRESULT EventSource::Point::EnumConnections(IEnumConnections** enumerator) {
    return com::guard(IID_IConnectionPoint, nullptr, [&] {
        com::out(enumerator) = nullptr;
        com::ComPtr<IEnumConnections> inners;
        const HRESULT code = inner().EnumConnections(&inners);
        if (FAILED(code)) return code;
        std::vector<CONNECTDATA> connections;
        std::vector<com::ComPtr<IUnknown>> owners;
        for (CONNECTDATA each{}; inners->Next(1, &each, nullptr) == S_OK;) {
            // The reference that came is given to an owner.
            *owners.emplace_back().GetAddressOf() = each.pUnk;
            connections.push_back(seenByHost(each, source_));
        }
        *enumerator = com::enumerate(connections);
        return S_OK;
    });
}

com::ComPtr<EventRelay> EventSource::Point::heard(std::int64_t number) {
    const std::lock_guard lock(mutex_);
    const auto found =
        std::ranges::find(known_, number, [](const Known& each) { return each.relay->number(); });
    return found == known_.end() ? nullptr : found->relay;
}

std::optional<EventAnswered> EventSource::Point::fire(const EventFired& event) {
    const com::ComPtr<EventRelay> relay = heard(event.sink);
    if (!relay) return std::nullopt;
    // Arguments of late-bound calls stand in reverse order. They are lent, not given.
    std::vector<com::Variant> arguments(event.in.size());
    std::vector<VARIANT> lent;
    for (std::size_t i = event.in.size(); i-- > 0;) {
        fromJson(event.in[i], *arguments[i].put());
        lent.push_back(arguments[i].get());
    }
    DISPPARAMS parameters{lent.data(), nullptr, static_cast<UINT>(lent.size()), 0};
    com::Variant result;
    const HRESULT code = relay->Invoke(static_cast<DISPID>(event.member), IID_NULL,
                                       LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                       event.isQuestion ? result.put() : nullptr, nullptr, nullptr);
    EventAnswered answer{static_cast<std::uint32_t>(code)};
    if (event.isQuestion && SUCCEEDED(code)) answer.out.push_back(toJson(result.get()));
    return answer;
}

}  // namespace kel::trace
