#pragma once
// A TCP connection as a transport, and the attempt that leads to one.

#include <winsock2.h>
#include <ws2tcpip.h>

#include <memory>
#include <string>

#include "bench/link/socket.h"
#include "bench/link/transport.h"

namespace kel::bench {

// An attempt to connect that never waits: it is asked again and again how it goes.
class ConnectionAttempt {
public:
    enum class State { kGoing, kConnected, kFailed };

    // Looks the names up, which alone may take the name service's time. A failure shows in poll().
    ConnectionAttempt(const std::wstring& host, const std::wstring& service);

    // Tries one address of the host after the other.
    State poll();

    // Of a failed attempt: the platform's code.
    int error() const { return error_; }

    // The connected socket of a successful attempt.
    Socket takeSocket() { return std::move(socket_); }

private:
    struct FreeAddresses {
        void operator()(addrinfoW* addresses) const { FreeAddrInfoW(addresses); }
    };

    void tryNext();

    std::unique_ptr<addrinfoW, FreeAddresses> addresses_;
    const addrinfoW* next_ = nullptr;
    Socket socket_;
    int error_ = 0;
};

class TcpConnection final : public Transport {
public:
    // Takes over a connected socket; the present connection is closed.
    void adopt(Socket socket, std::wstring address);

    bool isOpen() const override { return static_cast<bool>(socket_); }
    void close() override;
    bool receive(std::string& bytes) override;
    std::size_t send(std::string_view bytes) override;
    void holdBreak(bool) override {}
    long baudRate() const override { return baudRate_; }
    void setBaudRate(long rate) override { baudRate_ = rate; }
    std::wstring address() const override { return address_; }
    std::wstring description() const override { return address_; }

private:
    SocketLibrary library_;
    Socket socket_;
    std::wstring address_;
    // Callers choose their pauses by it: no line is slower than it needs to be.
    long baudRate_ = 115200;
};

}  // namespace kel::bench
