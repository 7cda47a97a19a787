#pragma once

#include <cstdint>
#include <string>

#include "bench/instrument/file_descriptor.h"
#include "bench/instrument/line.h"

namespace kel::bench {

// A TCP port that serves one client at a time. Further clients are not refused: they wait, their
// connection already made, and are served when the present one has gone, so that a host that
// reconnects at once is never turned away.
class TcpListener : public Line {
public:
    // Port 0 lets the system choose. The address is a numeric IPv4 or IPv6 one. Throws
    // std::system_error, or std::invalid_argument for an address that is none.
    TcpListener(const std::string& address, std::uint16_t port);

    std::string address() const override;
    int descriptor() const override { return client_ ? client_.get() : listener_.get(); }
    bool connected() const override { return static_cast<bool>(client_); }
    LineEvent receive(std::string& bytes) override;
    std::size_t send(std::string_view bytes) override;

private:
    LineEvent accept();

    FileDescriptor listener_;
    FileDescriptor client_;
};

}  // namespace kel::bench
