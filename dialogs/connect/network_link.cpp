#include "dialogs/connect/network_link.h"

#include "com/text.h"
#include "com/variant.h"
#include "interfaces/link_classes.h"

namespace kel::connect {

void NetworkLink::createStream() {
    com::ComPtr<IUnknown> object;
    if (FAILED(CoCreateInstance(link::kNetworkStreamClass, nullptr, CLSCTX_ALL,
                                IID_PPV_ARGS(&object))) ||
        FAILED(OleRun(object.Get()))) {
        return;
    }
    object.As(&stream_);
}

bool NetworkLink::connect(const NetworkConnection& connection) {
    com::ComPtr<IKelStream> present;
    com::check(link_->get_Port(&present), link_);
    // One that is no network stream is no failure.
    com::ComPtr<INetworkStream> presentNetwork;
    if (present) present.As(&presentNetwork);

    const com::ComPtr<INetworkStream> stream = stream_;
    if (!stream)
        throw com::Error(E_POINTER, L"The link's network component is not installed",
                         __uuidof(INetworkStream));
    VARIANT_BOOL isConnected = VARIANT_FALSE;
    com::check(stream->ConnectTo(com::Bstr(connection.address).get(),
                                 com::Bstr(connection.port).get(), &isConnected),
               stream);
    if (!com::isTrue(isConnected)) return false;
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

}  // namespace kel::connect
