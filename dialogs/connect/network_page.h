#pragma once
// The page of a session over a network gateway.

#include "dialogs/connect/network_form.h"
#include "dialogs/connect/session_page.h"

namespace kel::connect {

class NetworkPage final : public SessionPageOf<NetworkForm> {
public:
    using SessionPageOf::SessionPageOf;

    bool carryOut() override { return connect(); }
    bool carryOutAlone() override;

protected:
    bool isConnected(const NetworkConnection& connection) override;
    std::optional<GivenPassword> askPassword(const NetworkConnection& connection) override;

private:
    bool isAlone_ = false;
};

}  // namespace kel::connect
