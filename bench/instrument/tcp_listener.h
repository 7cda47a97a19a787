#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "bench/instrument/file_descriptor.h"
#include "bench/instrument/gateway.h"
#include "bench/instrument/line.h"

namespace kel::bench {

// A TCP port that serves one client at a time. Further clients are not refused: they wait, their
// connection already made, and are served when the present one has gone, so that a host that
// reconnects at once is never turned away. Where a gateway stands before it, a client is connected
// once that has let it in.
class TcpListener : public Line {
public:
    // Port 0 lets the system choose. The address is a numeric IPv4 or IPv6 one. Throws
    // std::system_error, or std::invalid_argument for an address that is none.
    TcpListener(const std::string& address, std::uint16_t port,
                std::optional<GatewayOptions> gateway);

    std::string address() const override;
    int descriptor() const override { return client_ ? client_.get() : listener_.get(); }
    bool connected() const override { return client_ && !gateway_; }
    LineEvent receive(std::string& bytes) override;
    std::size_t send(std::string_view bytes) override;

private:
    LineEvent accept();
    LineEvent passGateway(std::string& bytes);

    FileDescriptor listener_;
    FileDescriptor client_;
    std::optional<GatewayOptions> gatewayOptions_;
    // What the client has to pass yet.
    std::optional<Gateway> gateway_;
};

}  // namespace kel::bench
