#include "dialogs/connect/network_link.h"

#include "com/creation.h"
#include "com/port.h"
#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/link_classes.h"

namespace kel::connect {

void NetworkLink::createStream() {
    stream_ = com::createStarted<INetworkStream>(link::kNetworkStreamClass);
}

bool NetworkLink::connect(const NetworkConnection& connection) {
    const auto present = com::portOf(link_);
    // One that is no network stream is no failure.
    com::ComPtr<INetworkStream> presentNetwork;
    if (present) present.As(&presentNetwork);

    const com::ComPtr<INetworkStream> stream = stream_;
    if (!stream)
        throw com::Error(E_POINTER, L"The link's network component is not installed",
                         __uuidof(INetworkStream));
    // A link's library need not know of passwords.
    com::ComPtr<INetworkStream2> gateway;
    if (SUCCEEDED(stream.As(&gateway)))
        com::check(gateway->put_Password(com::Bstr(connection.password).get()), gateway);
    VARIANT_BOOL isConnected = VARIANT_FALSE;
    isGivenUp_ = false;
    {
        const bool isPresent = presentNetwork.Get() == stream.Get();
        const com::Scoped attempt(connecting_, isPresent ? com::ComPtr<INetworkStream>() : stream);
        com::check(stream->ConnectTo(com::Bstr(connection.address).get(),
                                     com::Bstr(connection.port).get(), &isConnected),
                   stream);
    }
    if (isGivenUp_) stream->Close();
    if (!com::isTrue(isConnected) || isGivenUp_) return false;
    if (presentNetwork.Get() == stream.Get()) return true;
    try {
        if (present) com::check(present->Close(), present);
        com::check(link_->put_Port(stream.Get()), link_);
    } catch (...) {
        // Nobody would close it later.
        stream->Close();
        throw;
    }
    return true;
}

void NetworkLink::giveUp() noexcept {
    const auto stream = connecting_;
    if (!stream) return;
    isGivenUp_ = true;
    stream->Close();
}

bool NetworkLink::wantsPassword() const {
    com::ComPtr<INetworkStream2> gateway;
    if (isGivenUp_ || !stream_ || FAILED(stream_.As(&gateway))) return false;
    VARIANT_BOOL isRequired = VARIANT_FALSE;
    com::check(gateway->get_PasswordRequired(&isRequired), gateway);
    return com::isTrue(isRequired);
}

bool NetworkLink::isConnected(const NetworkConnection& connection) const {
    const auto present = com::portOf(link_);
    com::ComPtr<INetworkStream> network;
    if (!present || FAILED(present.As(&network))) return false;
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    com::check(network->get_IsOpen(&isOpen), present);
    com::Bstr name;
    com::check(network->get_ConnectionString(name.put()), present);
    return com::isTrue(isOpen) &&
           com::sameName(name.view(), connection.address + L":" + connection.port);
}

}  // namespace kel::connect
