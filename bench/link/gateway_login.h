#pragma once
// How a connection passes the network gateway in front of an instrument.

#include <winsock2.h>

#include <string>
#include <string_view>

#include "bench/link/tcp_connection.h"

namespace kel::bench {

// The host and whether it stands behind a gateway: "gate:" before a host says so.
struct GatewayAddress {
    explicit GatewayAddress(std::wstring_view address);

    bool throughGateway;
    std::wstring host;
};

// False for a password that would break the line it is sent in.
bool isGatewayPassword(std::string_view password);

// Says the password to a gateway and hears its answer, on a connected socket that does not block.
// Takes nothing of what follows the answer: that is the instrument's. Never waits: it is asked
// again and again how it goes.
class GatewayLogin {
public:
    using State = ConnectionAttempt::State;

    GatewayLogin(SOCKET socket, std::string_view password);

    State poll();

    // Of a failed login: the platform's code, ERROR_INVALID_PASSWORD when the gateway wants a
    // password, or another one.
    int error() const { return error_; }

private:
    State fail(int error);
    State judge();

    SOCKET socket_;
    std::string unsent_;
    std::string answer_;
    int error_ = 0;
};

}  // namespace kel::bench
