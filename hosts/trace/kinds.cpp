#include "hosts/trace/kinds.h"

#include <algorithm>
#include <type_traits>

#include "com/collection.h"
#include "hosts/trace/collection.h"
#include "hosts/trace/communicator.h"
#include "hosts/trace/recorder_access.h"
#include "hosts/trace/services.h"
#include "hosts/trace/stream.h"
#include "interfaces/link_classes.h"

namespace kel::trace {
namespace {

template <class Wrapper>
com::ComPtr<IUnknown> make(const std::shared_ptr<Session>& session, const std::string& name,
                           IUnknown* inner, const Mobility&) {
    return com::createObject<Wrapper>(nullptr, static_cast<Wrapper**>(nullptr), session, name,
                                      inner);
}

template <class Wrapper>
com::ComPtr<IUnknown> makeMobile(const std::shared_ptr<Session>& session, const std::string& name,
                                 IUnknown* inner, const Mobility& mobility) {
    return com::createObject<Wrapper>(nullptr, static_cast<Wrapper**>(nullptr), session, name,
                                      inner, inner ? Mobility::of(inner) : mobility);
}

com::ComPtr<IUnknown> makeCollection(const std::shared_ptr<Session>& session,
                                     const std::string& name, IUnknown* inner,
                                     const Mobility& mobility) {
    if (inner) return makeMobile<CollectionWrapper>(session, name, inner, mobility);
    const com::ComPtr<IUnknown> container = com::createObject<com::Collection>(nullptr, nullptr);
    return com::createObject<CollectionWrapper>(nullptr, static_cast<CollectionWrapper**>(nullptr),
                                                session, name, container.Get(), mobility);
}

// The most special interfaces first.
constexpr Kind kTable[] = {
    {"link", &__uuidof(IKelCommunicator), nullptr, make<Communicator>},
    {"serial", &__uuidof(ISerialStream), &link::kSerialStreamClass, make<SerialStream>},
    {"gateway", &__uuidof(INetworkStream2), nullptr, make<GatewayStream>},
    {"network", &__uuidof(INetworkStream), &link::kNetworkStreamClass, make<NetworkStream>},
    {"stream", &__uuidof(IKelStream), nullptr, make<PlainStream>},
    {"collection", &__uuidof(ICollection), &link::kCollectionClass, makeCollection},
    {"pairUploader", &__uuidof(IFirmwareUploader2), nullptr, make<PairUploader>},
    {"uploader", &__uuidof(IFirmwareUploader), &link::kFirmwareUploaderClass, make<Uploader>},
    {"pressure", &__uuidof(IPressureAccess), &link::kPressureAccessClass, make<PressureAccess>},
    {"compass", &__uuidof(ICompassAccess), &link::kCompassAccessClass, make<CompassAccess>},
    {"recorder", &__uuidof(IRecorderAccess), nullptr, makeMobile<RecorderAccess>},
};

bool answers(IUnknown* object, const Kind& kind) {
    com::ComPtr<IUnknown> found;
    return SUCCEEDED(
        object->QueryInterface(*kind.interfaceId, reinterpret_cast<void**>(found.GetAddressOf())));
}

}  // namespace

std::span<const Kind> kinds() {
    return kTable;
}

com::ComPtr<IUnknown> wrap(const std::shared_ptr<Session>& session, IUnknown* inner) {
    if (TracedObject* traced = TracedObject::from(inner)) return traced->wrapper();
    com::ComPtr<IUnknown> identity;
    com::check(inner->QueryInterface(IID_PPV_ARGS(&identity)));
    if (const auto known = session->objects().around(identity.Get())) return known->wrapper();
    for (const Kind& kind : kinds()) {
        if (!answers(inner, kind)) continue;
        return kind.make(session, session->objects().nextName(kind.name), inner, {});
    }
    throw com::Error(E_NOINTERFACE, L"The object is none of an instrument link");
}

com::ComPtr<IUnknown> replayed(const std::shared_ptr<Session>& session, const std::string& name,
                               const Mobility& mobility) {
    if (const auto known = session->objects().named(name)) return known->wrapper();
    const std::string kindName = name.substr(0, name.find_last_not_of("0123456789") + 1);
    const auto kind =
        std::ranges::find(kinds(), kindName, [](const Kind& row) { return std::string(row.name); });
    if (kind == kinds().end()) throw com::Error(E_UNEXPECTED, L"A recorded object is of no kind");
    return kind->make(session, name, nullptr, mobility);
}

Json::Array told(IUnknown* made) {
    const TracedObject* traced = TracedObject::from(made);
    Json::Array values{toJson(made)};
    const Json mobility = traced ? traced->mobility().toJson() : Json();
    if (!mobility.isNull()) values.push_back(mobility);
    return values;
}

com::ComPtr<IUnknown> replayed(const std::shared_ptr<Session>& session, const Json::Array& values) {
    return replayed(session, values.at(0).utf8Text(),
                    values.size() > 1 ? Mobility::fromJson(values[1]) : Mobility());
}

com::ComPtr<IKelCommunicator> innerOf(IKelCommunicator* communicator) {
    com::ComPtr<IKelCommunicator> inner = communicator;
    TracedObject* traced = TracedObject::from(communicator);
    if (traced && traced->innerObject())
        com::check(traced->innerObject()->QueryInterface(IID_PPV_ARGS(&inner)));
    return inner;
}

}  // namespace kel::trace
