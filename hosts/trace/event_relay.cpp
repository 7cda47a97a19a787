#include "hosts/trace/event_relay.h"

#include "hosts/trace/arguments.h"

namespace kel::trace {
namespace {

template <class Interface>
com::ComPtr<Interface> asked(IUnknown* object, REFIID iid) {
    com::ComPtr<Interface> found;
    object->QueryInterface(iid, reinterpret_cast<void**>(found.GetAddressOf()));
    return found;
}

// Arguments of late-bound calls stand in reverse order.
Json::Array inOrder(const DISPPARAMS* arguments) {
    Json::Array values;
    for (UINT i = arguments ? arguments->cArgs : 0; i-- > 0;)
        values.push_back(toJson(arguments->rgvarg[i]));
    return values;
}

}  // namespace

EventRelay::EventRelay(std::shared_ptr<Session> session, std::string object, const IID& source,
                       long number, IUnknown* sink)
    : session_(std::move(session)),
      object_(std::move(object)),
      source_(source),
      number_(number),
      sink_(sink),
      asSource_(asked<IDispatch>(sink, source)),
      asDispatch_(asked<IDispatch>(sink, IID_IDispatch)) {}

HRESULT EventRelay::Invoke(DISPID member, REFIID iid, LCID locale, WORD flags,
                           DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                           UINT* badArgument) {
    // The sink may leave in the middle of its event.
    const com::KeepAlive alive(*this);
    const Lanes::Stay stay(session_->lanes());
    if (session_->isRecording()) {
        if (const auto object = session_->objects().named(object_))
            object->eventComes(member, arguments);
    }
    session_->tellEvent([&] {
        return EventFired{object_, number_, member, inOrder(arguments), result != nullptr};
    });
    const HRESULT code =
        sink().Invoke(member, iid, locale, flags, arguments, result, exception, badArgument);
    session_->tellEventEnd([&] {
        EventAnswered answer{static_cast<std::uint32_t>(code)};
        if (result && SUCCEEDED(code)) answer.out.push_back(toJson(*result));
        return answer;
    });
    return code;
}

IUnknown* EventRelay::target(REFIID iid) {
    if (iid == source_) return asSource_.Get();
    return iid == IID_IDispatch ? static_cast<IUnknown*>(asDispatch_.Get()) : sink_.Get();
}

void* EventRelay::findInterface(REFIID iid) {
    if ((iid == source_ && asSource_) || (iid == IID_IDispatch && asDispatch_))
        return static_cast<IDispatch*>(this);
    return iid == __uuidof(IEventRelay) ? static_cast<IEventRelay*>(this) : nullptr;
}

HRESULT EventRelay::findElsewhere(REFIID iid, void** result) {
    if (Passage::isAskedFor(iid)) return passage_.give(iid, controlling(), result);
    return sink_->QueryInterface(iid, result);
}

}  // namespace kel::trace
