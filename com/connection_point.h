#pragma once
// Events: the outgoing interface of a component, as a rule a dispatch interface.
//
//     class Counter final : public com::Object<Counter, com::Dual<ICounter>,
//                                              com::Events<&DIID__ICounterEvents>> {
//         ... fire(kChanged, value);

#include <windows.h>

#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>

#include <initializer_list>
#include <map>
#include <mutex>
#include <type_traits>
#include <vector>

#include "com/error.h"
#include "com/variant.h"

namespace kel::com {

// The sinks of one outgoing interface. A part of its component: it shares the component's life, but
// has an identity of its own. Any thread, if the component and the sinks are of that kind.
class ConnectionPoint final : public IConnectionPoint {
public:
    // Where the source is a dispatch interface, sinks may answer IDispatch in its place.
    ConnectionPoint(IConnectionPointContainer& container, const IID& source, bool isDispatch)
        : container_(container), source_(source), isDispatch_(isDispatch) {}
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    bool hasSinks() const {
        const std::lock_guard lock(mutex_);
        return !sinks_.empty();
    }

    // Calls a member of every sink of a dispatch interface. A sink may advise or unadvise
    // meanwhile; one that fails is none of the component's business. Throws for want of memory
    // only.
    void fire(DISPID member, std::initializer_list<Variant> arguments);

    // The sinks of now. `Sink` is the source interface.
    template <class Sink>
    std::vector<ComPtr<Sink>> sinks() const {
        const std::lock_guard lock(mutex_);
        std::vector<ComPtr<Sink>> sinks;
        // What is kept is the pointer to that interface.
        for (const auto& [cookie, sink] : sinks_)
            sinks.emplace_back(static_cast<Sink*>(sink.Get()));
        return sinks;
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return container_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return container_.Release(); }
    STDMETHODIMP GetConnectionInterface(IID* iid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** enumerator) override;

private:
    IConnectionPointContainer& container_;
    const IID& source_;
    bool isDispatch_;
    mutable std::mutex mutex_;
    std::map<DWORD, ComPtr<IUnknown>> sinks_;
    DWORD lastCookie_ = 0;
};

// Gives an object one outgoing interface; stands in the object's list of interfaces.
template <const IID* source, class Sink = IDispatch>
class Events : public IConnectionPointContainer {
public:
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** enumerator) override;

    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        return guard(IID_IConnectionPointContainer, nullptr, [&] {
            out(point) = nullptr;
            if (iid != *source) throw Error(CONNECT_E_NOCONNECTION);
            *point = &events_;
            events_.AddRef();
        });
    }

protected:
    void* find(REFIID iid) {
        return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this)
                                                    : nullptr;
    }

    ConnectionPoint events_{*this, *source, std::is_same_v<Sink, IDispatch>};
};

// Enumerators over what is in a list now. The caller owns them.
IEnumConnectionPoints* enumerate(const std::vector<ComPtr<IConnectionPoint>>& points);
IEnumConnections* enumerate(const std::vector<CONNECTDATA>& connections);

template <const IID* source, class Sink>
HRESULT Events<source, Sink>::EnumConnectionPoints(IEnumConnectionPoints** enumerator) {
    return guard(IID_IConnectionPointContainer, nullptr,
                 [&] { out(enumerator) = enumerate({ComPtr<IConnectionPoint>(&events_)}); });
}

}  // namespace kel::com
