#include "bench/speed/wire_end.h"

#include <stdexcept>
#include <utility>

namespace kel::bench {

double now() {
    LARGE_INTEGER count;
    LARGE_INTEGER perSecond;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&perSecond);
    return 1000.0 * static_cast<double>(count.QuadPart) / static_cast<double>(perSecond.QuadPart);
}

WireEnd::WireEnd(Handlers handlers)
    : handlers_(std::move(handlers)), listener_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    auto* const where = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, where, size) != 0 || listen(listener_, 1) != 0 ||
        getsockname(listener_, where, &size) != 0) {
        closesocket(listener_);
        throw std::runtime_error("cannot listen on a port");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
}

// The client must have gone.
WireEnd::~WireEnd() {
    closesocket(listener_);
    thread_.join();
}

void WireEnd::send(std::string_view bytes) {
    ::send(client_, bytes.data(), static_cast<int>(bytes.size()), 0);
}

void WireEnd::serve() {
    client_ = accept(listener_, nullptr, nullptr);
    if (client_ == INVALID_SOCKET) return;
    const BOOL withoutDelay = TRUE;
    setsockopt(client_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&withoutDelay),
               sizeof withoutDelay);
    char buffer[256];
    for (;;) {
        const int count = recv(client_, buffer, sizeof buffer, 0);
        if (count <= 0) break;
        take({buffer, static_cast<std::size_t>(count)}, now());
    }
    closesocket(client_);
}

void WireEnd::take(std::string_view bytes, double time) {
    for (const char byte : bytes) {
        if (byte != '\r') {
            if (line_.empty()) handlers_.lineBegan(time);
            line_ += byte;
            continue;
        }
        handlers_.lineEnded(*this, line_, time);
        line_.clear();
    }
}

}  // namespace kel::bench
