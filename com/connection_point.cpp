#include "com/connection_point.h"

#include <algorithm>
#include <vector>

#include "com/object.h"

namespace kel::com {
namespace {

// The elements of a list that is fixed when the enumerator is made. `Interface` is one of the
// platform's enumerators, `Element` what it gives; `copy` hands out an element with references.
template <class Interface, class Element, Element (*copy)(const Element&)>
class ListEnumerator final
    : public Object<ListEnumerator<Interface, Element, copy>, Plain<Interface>> {
public:
    static constexpr ClassDescription kClass{};

    ListEnumerator(std::vector<Element> list, std::vector<ComPtr<IUnknown>> owners,
                   std::size_t position)
        : list_(std::move(list)), owners_(std::move(owners)), position_(position) {}

    STDMETHODIMP Next(ULONG wanted, Element* elements, ULONG* fetched) override {
        if (fetched) *fetched = 0;
        if (!elements || (wanted > 1 && !fetched)) return E_POINTER;
        const ULONG given =
            static_cast<ULONG>(std::min<std::size_t>(wanted, list_.size() - position_));
        std::transform(list_.begin() + position_, list_.begin() + position_ + given, elements,
                       copy);
        position_ += given;
        if (fetched) *fetched = given;
        return given == wanted ? S_OK : S_FALSE;
    }

    STDMETHODIMP Skip(ULONG skipped) override {
        const std::size_t left = list_.size() - position_;
        position_ += std::min<std::size_t>(skipped, left);
        return skipped <= left ? S_OK : S_FALSE;
    }

    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }

    STDMETHODIMP Clone(Interface** result) override {
        return guard(__uuidof(Interface), nullptr, [&] {
            out(result) = nullptr;
            *result = makeObject<ListEnumerator>(list_, owners_, position_).Detach();
        });
    }

private:
    std::vector<Element> list_;
    std::vector<ComPtr<IUnknown>> owners_;
    std::size_t position_;
};

LPCONNECTIONPOINT copyPoint(const LPCONNECTIONPOINT& point) {
    point->AddRef();
    return point;
}

CONNECTDATA copyConnection(const CONNECTDATA& connection) {
    connection.pUnk->AddRef();
    return connection;
}

using PointEnumerator = ListEnumerator<IEnumConnectionPoints, LPCONNECTIONPOINT, copyPoint>;
using ConnectionEnumerator = ListEnumerator<IEnumConnections, CONNECTDATA, copyConnection>;

}  // namespace

void ConnectionPoint::fire(DISPID member, std::initializer_list<Variant> arguments) {
    // Arguments of a late-bound call stand in reverse order. They are lent, not given.
    std::vector<VARIANT> values;
    for (const Variant& argument : arguments)
        values.push_back(argument.get());
    std::reverse(values.begin(), values.end());
    DISPPARAMS parameters = {values.data(), nullptr, static_cast<UINT>(values.size()), 0};

    for (const ComPtr<IDispatch>& sink : sinks<IDispatch>()) {
        sink->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr,
                     nullptr, nullptr);
    }
}

HRESULT ConnectionPoint::QueryInterface(REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IConnectionPoint) return E_NOINTERFACE;
    *result = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* iid) {
    return guard(IID_IConnectionPoint, nullptr, [&] { out(iid) = source_; });
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    return guard(IID_IConnectionPoint, nullptr, [&] {
        out(container) = &container_;
        container_.AddRef();
    });
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    return guard(IID_IConnectionPoint, nullptr, [&] {
        out(cookie) = 0;
        if (!sink) throw Error(E_POINTER);
        ComPtr<IUnknown> taken;
        const auto takes = [&](const IID& iid) {
            void** place = reinterpret_cast<void**>(taken.ReleaseAndGetAddressOf());
            return SUCCEEDED(sink->QueryInterface(iid, place));
        };
        // Sinks of script hosts answer the outgoing interface, plain ones IDispatch only.
        if (!takes(source_) && !(isDispatch_ && takes(IID_IDispatch)))
            throw Error(CONNECT_E_CANNOTCONNECT);
        const std::lock_guard lock(mutex_);
        sinks_.emplace(lastCookie_ + 1, std::move(taken));
        *cookie = ++lastCookie_;
    });
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) {
    return guard(IID_IConnectionPoint, nullptr, [&] {
        // The sink is released last: it may call back.
        const auto node = [&] {
            const std::lock_guard lock(mutex_);
            return sinks_.extract(cookie);
        }();
        if (node.empty()) throw Error(CONNECT_E_NOCONNECTION);
    });
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** enumerator) {
    return guard(IID_IConnectionPoint, nullptr, [&] {
        out(enumerator) = nullptr;
        std::vector<CONNECTDATA> connections;
        const std::lock_guard lock(mutex_);
        for (const auto& [cookie, sink] : sinks_)
            connections.push_back({sink.Get(), cookie});
        *enumerator = enumerate(connections);
    });
}

IEnumConnectionPoints* enumerate(const std::vector<ComPtr<IConnectionPoint>>& points) {
    std::vector<LPCONNECTIONPOINT> list;
    for (const ComPtr<IConnectionPoint>& point : points)
        list.push_back(point.Get());
    std::vector<ComPtr<IUnknown>> owners(list.begin(), list.end());
    return makeObject<PointEnumerator>(std::move(list), std::move(owners), 0).Detach();
}

IEnumConnections* enumerate(const std::vector<CONNECTDATA>& connections) {
    std::vector<ComPtr<IUnknown>> owners;
    for (const CONNECTDATA& connection : connections)
        owners.emplace_back(connection.pUnk);
    return makeObject<ConnectionEnumerator>(connections, std::move(owners), 0).Detach();
}

}  // namespace kel::com
