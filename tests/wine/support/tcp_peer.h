#pragma once
// The other ends of a connection: one that does what a test says, and the virtual instrument.

#include <winsock2.h>

#include <atomic>
#include <string>
#include <string_view>
#include <thread>

#include "bench/instrument/instrument.h"
#include "com/text.h"

namespace kel::bench::test {

// Listens on a port of its own and serves one client, on the test's thread.
class TcpPeer {
public:
    TcpPeer();
    ~TcpPeer();

    com::Bstr port() const { return com::Bstr(std::to_wstring(port_)); }

    // Takes the client, which must have connected.
    void accept();
    // The same, as long as it is worth waiting before something else is to be looked at.
    bool acceptsSoon();
    bool hasClient() const { return client_ != INVALID_SOCKET; }
    void send(std::string_view bytes);
    // False when the client has gone.
    bool sends(std::string_view bytes);
    // Waits until so many bytes have come.
    std::string receive(std::size_t count);
    // What has come; waits at most a millisecond for something.
    std::string receiveSome();
    void vanish();

private:
    SOCKET listener_;
    SOCKET client_ = INVALID_SOCKET;
    int port_;
};

// The instrument behind a peer of its own, on a thread of its own; behind a gateway with the same
// troubles where that is wanted.
class InstrumentServer {
public:
    explicit InstrumentServer(InstrumentOptions options, double timeScale = 1,
                              bool hasGateway = false);
    ~InstrumentServer();

    com::Bstr port() const { return peer_.port(); }

private:
    void run(InstrumentOptions options, double timeScale, bool hasGateway);
    void letIn(const InstrumentOptions& options, double timeScale);

    TcpPeer peer_;
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

}  // namespace kel::bench::test
