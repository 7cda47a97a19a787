#include "hosts/trace/kinds.h"

#include <algorithm>
#include <type_traits>

#include "com/collection.h"
#include "hosts/trace/collection.h"
#include "hosts/trace/communicator.h"
#include "hosts/trace/services.h"
#include "hosts/trace/stream.h"
#include "interfaces/link_classes.h"

namespace kel::trace {
namespace {

constexpr CLSID kUploaderClass = {
    0x152E70D7, 0xE0DA, 0x4571, {0xA8, 0xA6, 0x30, 0x87, 0xD2, 0x29, 0x2F, 0x1E}};
constexpr CLSID kPressureClass = {
    0x4D1D61E3, 0x202C, 0x40EF, {0xAE, 0x5F, 0x4A, 0xAE, 0xDC, 0x64, 0xDF, 0x62}};
constexpr CLSID kCompassClass = {
    0x6372840A, 0xB84F, 0x4C43, {0xA5, 0xA6, 0x3E, 0x07, 0xAD, 0x2D, 0x8A, 0x56}};

template <class Wrapper>
com::ComPtr<IUnknown> make(const std::shared_ptr<Session>& session, const std::string& name,
                           IUnknown* inner) {
    return com::createObject<Wrapper>(nullptr, static_cast<Wrapper**>(nullptr), session, name,
                                      inner);
}

com::ComPtr<IUnknown> makeCollection(const std::shared_ptr<Session>& session,
                                     const std::string& name, IUnknown* inner) {
    com::ComPtr<IUnknown> container = inner;
    if (!container) {
        container = com::createObject<com::Collection>(nullptr, nullptr);
    }
    return make<CollectionWrapper>(session, name, container.Get());
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
    {"uploader", &__uuidof(IFirmwareUploader), &kUploaderClass, make<Uploader>},
    {"pressure", &__uuidof(IPressureAccess), &kPressureClass, make<PressureAccess>},
    {"compass", &__uuidof(ICompassAccess), &kCompassClass, make<CompassAccess>},
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
    if (TracedObject* known = session->objects().around(identity.Get())) return known->wrapper();
    for (const Kind& kind : kinds()) {
        if (!answers(inner, kind)) continue;
        return kind.make(session, session->objects().nextName(kind.name), inner);
    }
    throw com::Error(E_NOINTERFACE, L"The object is none of an instrument link");
}

com::ComPtr<IUnknown> replayed(const std::shared_ptr<Session>& session, const std::string& name) {
    if (TracedObject* known = session->objects().named(name)) return known->wrapper();
    const std::string kindName = name.substr(0, name.find_last_not_of("0123456789") + 1);
    const auto kind =
        std::ranges::find(kinds(), kindName, [](const Kind& row) { return std::string(row.name); });
    if (kind == kinds().end()) throw com::Error(E_UNEXPECTED, L"A recorded object is of no kind");
    return kind->make(session, name, nullptr);
}

com::ComPtr<IKelCommunicator> innerOf(IKelCommunicator* communicator) {
    com::ComPtr<IKelCommunicator> inner = communicator;
    TracedObject* traced = TracedObject::from(communicator);
    if (traced && traced->innerObject())
        com::check(traced->innerObject()->QueryInterface(IID_PPV_ARGS(&inner)));
    return inner;
}

}  // namespace kel::trace
