#include "bench/link/tcp_connection.h"

#include <algorithm>
#include <utility>

namespace kel::bench {
namespace {

constexpr std::size_t kTcpReadSize = 4096;
constexpr std::size_t kTcpWriteSize = 65536;

bool wouldWait() {
    return WSAGetLastError() == WSAEWOULDBLOCK;
}

void prepare(SOCKET socket) {
    u_long nonBlocking = 1;
    ioctlsocket(socket, FIONBIO, &nonBlocking);
    // Commands are short and wait for their answer.
    const BOOL noDelay = TRUE;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay),
               sizeof noDelay);
}

}  // namespace

ConnectionAttempt::ConnectionAttempt(const std::wstring& host, const std::wstring& service) {
    // The platform takes an empty name for this machine.
    if (host.empty() || service.empty()) {
        error_ = WSAHOST_NOT_FOUND;
        return;
    }
    addrinfoW hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfoW* addresses = nullptr;
    error_ = GetAddrInfoW(host.c_str(), service.c_str(), &hints, &addresses);
    addresses_.reset(addresses);
    next_ = addresses;
    tryNext();
}

void ConnectionAttempt::tryNext() {
    socket_ = Socket();
    while (next_ && !socket_) {
        const addrinfoW& address = *std::exchange(next_, next_->ai_next);
        Socket socket(WSASocketW(address.ai_family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, 0));
        if (socket) prepare(socket.get());
        const bool begun = socket && (connect(socket.get(), address.ai_addr,
                                              static_cast<int>(address.ai_addrlen)) == 0 ||
                                      wouldWait());
        if (begun) {
            socket_ = std::move(socket);
        } else {
            error_ = WSAGetLastError();
        }
    }
}

ConnectionAttempt::State ConnectionAttempt::poll() {
    if (!socket_) return State::kFailed;

    fd_set connected{1, {socket_.get()}};
    fd_set failed{1, {socket_.get()}};
    timeval now{};
    select(0, nullptr, &connected, &failed, &now);
    int error = 0;
    int size = sizeof error;
    if (getsockopt(socket_.get(), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size)) {
        error = WSAGetLastError();
    }
    if (error == 0 && failed.fd_count == 0) {
        return connected.fd_count > 0 ? State::kConnected : State::kGoing;
    }
    error_ = error == 0 ? WSAECONNREFUSED : error;
    tryNext();
    return socket_ ? State::kGoing : State::kFailed;
}

void TcpConnection::adopt(Socket socket, std::wstring address) {
    socket_ = std::move(socket);
    address_ = std::move(address);
}

void TcpConnection::close() {
    socket_ = Socket();
    address_.clear();
}

bool TcpConnection::receive(std::string& bytes) {
    if (!isOpen()) return false;
    char buffer[kTcpReadSize];
    const int count = recv(socket_.get(), buffer, sizeof buffer, 0);
    if (count > 0) {
        bytes.append(buffer, static_cast<std::size_t>(count));
        return true;
    }
    if (count == 0 || !wouldWait()) close();
    return false;
}

std::size_t TcpConnection::send(std::string_view bytes) {
    if (!isOpen()) return 0;
    const int size = static_cast<int>(std::min(bytes.size(), kTcpWriteSize));
    const int count = ::send(socket_.get(), bytes.data(), size, 0);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (!wouldWait()) close();
    return 0;
}

}  // namespace kel::bench
