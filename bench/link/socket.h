#pragma once
// Owns a Windows socket, and the use of the socket library for as long.

#include <winsock2.h>

#include <utility>

namespace kel::bench {

// The use of the socket library. Throws com::Error when it does not start.
class SocketLibrary {
public:
    SocketLibrary();
    ~SocketLibrary();
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

class Socket {
public:
    Socket() = default;
    explicit Socket(SOCKET socket) : socket_(socket) {}
    Socket(Socket&& other) noexcept : socket_(std::exchange(other.socket_, INVALID_SOCKET)) {}
    Socket& operator=(Socket other) noexcept {
        std::swap(socket_, other.socket_);
        return *this;
    }
    ~Socket() {
        if (*this) closesocket(socket_);
    }

    SOCKET get() const { return socket_; }
    explicit operator bool() const { return socket_ != INVALID_SOCKET; }

private:
    SOCKET socket_ = INVALID_SOCKET;
};

}  // namespace kel::bench
