#pragma once
// The network side of the instrument link.

#include "com/error.h"
#include "dialogs/connect/model/connection_list.h"
#include "interfaces/KelUtils.h"

namespace kel::connect {

// Every member throws com::Error when the link fails.
class NetworkLink {
public:
    explicit NetworkLink(com::ComPtr<IKelCommunicator> link) : link_(std::move(link)) {}

    // Makes the stream that is to be connected. Where the link's library has none, connecting fails
    // with E_POINTER later.
    void createStream();

    // Connects that stream and puts it in the place of the link's present port, which is closed
    // then; false when no connection was made, and the present port is as it was.
    bool connect(const NetworkConnection& connection);

    // Called in the middle of connect(), which then ends as soon as the stream lets it, and has
    // connected nothing.
    void giveUp() noexcept;

    // True when the last attempt failed because the gateway wants a password, or another one.
    bool wantsPassword() const;

    // True when the link's present port is this connection and open.
    bool isConnected(const NetworkConnection& connection) const;

private:
    com::ComPtr<IKelCommunicator> link_;
    com::ComPtr<INetworkStream> stream_;
    com::ComPtr<INetworkStream> connecting_;  // nothing is lost where it is closed
    bool isGivenUp_ = false;
};

}  // namespace kel::connect
