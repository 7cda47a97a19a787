#include "bench/instrument/tcp_listener.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <stdexcept>

#include "bench/instrument/system_error.h"
#include "bench/instrument/transfer.h"

namespace kel::bench {

namespace {

constexpr int kWaitingClients = 4;

void enable(int descriptor, int level, int option) {
    const int on = 1;
    if (::setsockopt(descriptor, level, option, &on, sizeof on) != 0) throwSystemError("socket");
}

}  // namespace

TcpListener::TcpListener(const std::string& address, std::uint16_t port,
                         std::optional<GatewayOptions> gateway)
    : gatewayOptions_(std::move(gateway)) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
        throw std::invalid_argument("not a numeric address: " + address);
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);

    listener_ =
        FileDescriptor(::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener_) throwSystemError("socket");
    enable(listener_.get(), SOL_SOCKET, SO_REUSEADDR);
    if (::bind(listener_.get(), found->ai_addr, found->ai_addrlen) != 0 ||
        ::listen(listener_.get(), kWaitingClients) != 0) {
        throwSystemError(address + " port " + std::to_string(port));
    }
    // A client that goes while it is written to is told by the next read.
    std::signal(SIGPIPE, SIG_IGN);
}

std::string TcpListener::address() const {
    sockaddr_storage storage{};
    socklen_t size = sizeof storage;
    if (::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&storage), &size) != 0) {
        throwSystemError("socket");
    }
    // The port stands at the same place in both families.
    return std::to_string(ntohs(reinterpret_cast<const sockaddr_in&>(storage).sin_port));
}

LineEvent TcpListener::receive(std::string& bytes) {
    if (!client_) return accept();
    const auto event = gateway_ ? passGateway(bytes) : receiveFrom(client_.get(), bytes);
    if (event == LineEvent::kDisconnected) client_.reset();
    return event;
}

LineEvent TcpListener::passGateway(std::string& bytes) {
    std::string arrived;
    const auto event = receiveFrom(client_.get(), arrived);
    if (event != LineEvent::kBytes) return event;
    const auto reply = gateway_->feed(arrived);
    // The first bytes to a client always find room.
    sendTo(client_.get(), reply.answer);
    if (reply.then == Gateway::Then::kClose) return LineEvent::kDisconnected;
    if (reply.then == Gateway::Then::kPassOn) gateway_.reset();
    bytes += reply.passedOn;
    return reply.passedOn.empty() ? LineEvent::kNothing : LineEvent::kBytes;
}

std::size_t TcpListener::send(std::string_view bytes) {
    return sendTo(client_.get(), bytes);
}

LineEvent TcpListener::accept() {
    client_ =
        FileDescriptor(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    // A client that gave up while it waited is no failure of the line.
    if (!client_) return LineEvent::kNothing;
    enable(client_.get(), IPPROTO_TCP, TCP_NODELAY);
    gateway_.reset();
    if (gatewayOptions_) gateway_.emplace(*gatewayOptions_);
    return LineEvent::kConnected;
}

}  // namespace kel::bench
