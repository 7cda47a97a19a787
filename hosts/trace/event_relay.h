#pragma once
// Stands between a traced object and one of the host's sinks, to tell which events it gets.

#include <memory>
#include <string>

#include "com/object.h"
#include "hosts/trace/mobility.h"
#include "hosts/trace/session.h"

namespace kel::trace {

// Tells the relays of this module from all other sinks.
struct IEventRelay : public IUnknown {
    // The sink's own pointer to an interface; null when it has none.
    STDMETHOD_(IUnknown*, target)(REFIID iid) = 0;
};

}  // namespace kel::trace

__CRT_UUID_DECL(kel::trace::IEventRelay, 0x6A0B8F57, 0x2C39, 0x4D0E, 0x91, 0x5B, 0x3E, 0xD4, 0x70,
                0x1C, 0xA8, 0x66)

namespace kel::trace {

// Answers the interfaces that the sink answers, and goes to other threads as the sink does.
class EventRelay final
    : public com::Object<EventRelay, com::Plain<IDispatch>, com::Plain<IEventRelay>> {
public:
    static constexpr com::ClassDescription kClass{};

    // `object` fires events of the dispatch interface `source`; the sink is its `number`-th.
    EventRelay(std::shared_ptr<Session> session, std::string object, const IID& source, long number,
               IUnknown* sink);

    void finalConstruct() { passage_.open(Mobility::of(sink_.Get()), controlling()); }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return sink().GetTypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** type) override {
        return sink().GetTypeInfo(index, locale, type);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* identifiers) override {
        return sink().GetIDsOfNames(iid, names, count, locale, identifiers);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

    STDMETHODIMP_(IUnknown*) target(REFIID iid) override;
    long number() const { return number_; }

protected:
    void* findInterface(REFIID iid) override;
    HRESULT findElsewhere(REFIID iid, void** result) override;

private:
    // Called through no interface that the sink does not have.
    IDispatch& sink() { return asSource_ ? *asSource_.Get() : *asDispatch_.Get(); }

    const std::shared_ptr<Session> session_;
    const std::string object_;
    const IID& source_;
    const long number_;
    const com::ComPtr<IUnknown> sink_;
    com::ComPtr<IDispatch> asSource_;
    com::ComPtr<IDispatch> asDispatch_;
    Passage passage_;
};

}  // namespace kel::trace
