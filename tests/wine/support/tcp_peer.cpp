#include "tests/wine/support/tcp_peer.h"

#include <gtest/gtest.h>

#include "bench/instrument/gateway.h"

namespace kel::bench::test {
namespace {

bool readable(SOCKET socket, long microseconds) {
    fd_set sockets{1, {socket}};
    timeval timeout{0, microseconds};
    return select(0, &sockets, nullptr, nullptr, &timeout) == 1;
}

// The time that an instrument has worked, from now on.
auto clock(double scale) {
    return [scale, start = std::chrono::steady_clock::now()] {
        return std::chrono::duration_cast<Duration>((std::chrono::steady_clock::now() - start) *
                                                    scale);
    };
}

}  // namespace

TcpPeer::TcpPeer() : listener_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
    listen(listener_, 4);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
}

TcpPeer::~TcpPeer() {
    vanish();
    closesocket(listener_);
}

void TcpPeer::accept() {
    while (!acceptsSoon())
        continue;
}

bool TcpPeer::acceptsSoon() {
    if (readable(listener_, 100000)) client_ = ::accept(listener_, nullptr, nullptr);
    return hasClient();
}

void TcpPeer::send(std::string_view bytes) {
    EXPECT_TRUE(sends(bytes));
}

bool TcpPeer::sends(std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    return ::send(client_, bytes.data(), size, 0) == size;
}

std::string TcpPeer::receive(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count && hasClient())
        bytes += receiveSome();
    return bytes;
}

std::string TcpPeer::receiveSome() {
    if (!readable(client_, 1000)) return {};
    char buffer[256];
    const int count = recv(client_, buffer, sizeof buffer, 0);
    if (count <= 0) vanish();
    return {buffer, static_cast<std::size_t>(count > 0 ? count : 0)};
}

void TcpPeer::vanish() {
    if (hasClient()) closesocket(client_);
    client_ = INVALID_SOCKET;
}

InstrumentServer::InstrumentServer(InstrumentOptions options, double timeScale, bool hasGateway)
    : thread_([this, options = std::move(options), timeScale, hasGateway] {
          run(options, timeScale, hasGateway);
      }) {}

InstrumentServer::~InstrumentServer() {
    ends_ = true;
    thread_.join();
}

// What the gateway says takes the way that the instrument's words take.
void InstrumentServer::letIn(const InstrumentOptions& options, double timeScale) {
    const bool isTroubled = options.troubleAfter == 0;
    Gateway gateway({});
    Gateway::Reply reply;
    while (!ends_ && peer_.hasClient() && reply.then == Gateway::Then::kWait)
        reply = gateway.feed(peer_.receiveSome());
    if (options.vanishAfter == 0) return peer_.vanish();
    LineOutput output(options.seed);
    if (!isTroubled || !options.silent) {
        output.push(reply.answer, isTroubled ? options.slow : Duration(),
                    isTroubled ? options.garbleRate : 0);
    }
    const auto now = clock(timeScale);
    while (!ends_ && peer_.hasClient() && ((isTroubled && options.silent) || output.nextDue())) {
        peer_.receiveSome();
        peer_.sends(output.take(now()));
    }
}

void InstrumentServer::run(InstrumentOptions options, double timeScale, bool hasGateway) {
    const auto now = clock(timeScale);
    while (!ends_ && !peer_.acceptsSoon())
        continue;
    if (hasGateway) letIn(options, timeScale);
    Instrument instrument(std::move(options));
    while (!ends_ && peer_.hasClient()) {
        instrument.feed(peer_.receiveSome(), now());
        const std::string bytes = instrument.take(now());
        // A client that has gone meanwhile is no failure.
        if (!bytes.empty() && peer_.hasClient() && !peer_.sends(bytes)) peer_.vanish();
        if (instrument.vanished()) peer_.vanish();
    }
}

}  // namespace kel::bench::test
