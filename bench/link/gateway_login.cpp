#include "bench/link/gateway_login.h"

#include "com/text.h"

namespace kel::bench {
namespace {

constexpr std::wstring_view kGatewayPrefix = L"gate:";
constexpr std::size_t kLongestAnswer = 512;

}  // namespace

GatewayAddress::GatewayAddress(std::wstring_view address)
    : throughGateway(com::sameName(address.substr(0, kGatewayPrefix.size()), kGatewayPrefix)),
      host(address.substr(throughGateway ? kGatewayPrefix.size() : 0)) {}

bool isGatewayPassword(std::string_view password) {
    return password.find_first_of(std::string_view("\r\n\0", 3)) == password.npos;
}

GatewayLogin::GatewayLogin(SOCKET socket, std::string_view password)
    : socket_(socket), unsent_("KELGATE " + std::string(password) + "\r\n") {}

GatewayLogin::State GatewayLogin::poll() {
    while (!unsent_.empty()) {
        const int sent = send(socket_, unsent_.data(), static_cast<int>(unsent_.size()), 0);
        if (sent < 0) return fail(WSAGetLastError());
        unsent_.erase(0, static_cast<std::size_t>(sent));
    }
    // One byte at a time, so that none behind the line end is taken.
    while (!answer_.ends_with('\n')) {
        char byte = 0;
        const int count = recv(socket_, &byte, 1, 0);
        if (count < 0) return fail(WSAGetLastError());
        if (count == 0) return fail(WSAECONNRESET);
        answer_ += byte;
        if (answer_.size() > kLongestAnswer) return fail(ERROR_BAD_NET_RESP);
    }
    return judge();
}

// A socket that has nothing yet has not failed.
GatewayLogin::State GatewayLogin::fail(int error) {
    if (error == WSAEWOULDBLOCK) return State::kGoing;
    error_ = error;
    return State::kFailed;
}

GatewayLogin::State GatewayLogin::judge() {
    answer_.erase(answer_.find_last_not_of("\r\n") + 1);
    if (answer_ == "READY") return State::kConnected;
    if (answer_ == "PASSWORD") return fail(ERROR_INVALID_PASSWORD);
    return fail(answer_ == "REFUSED" ? WSAECONNREFUSED : ERROR_BAD_NET_RESP);
}

}  // namespace kel::bench
