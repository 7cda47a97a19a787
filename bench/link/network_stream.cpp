#include "bench/link/network_stream.h"

#include "bench/link/gateway_login.h"

namespace kel::bench {
namespace {

constexpr long kConnectTimeout = 10000;

}  // namespace

HRESULT NetworkStream::ConnectTo(BSTR address, BSTR port, VARIANT_BOOL* result) {
    int error = 0;
    const HRESULT code = operation([&] {
        com::out(result) = VARIANT_FALSE;
        passwordRequired_ = false;
        error = connect(std::wstring(com::view(address)), std::wstring(com::view(port)));
        // A handler that ran meanwhile may have connected too: the last word counts.
        passwordRequired_ = error == ERROR_INVALID_PASSWORD;
        *result = com::variantBool(error == 0);
    });
    // Callers read the reason here; nothing may come in between.
    SetLastError(static_cast<DWORD>(error));
    return code;
}

HRESULT NetworkStream::Close() {
    ++closings_;
    return StreamObject::Close();
}

HRESULT NetworkStream::get_PasswordRequired(VARIANT_BOOL* required) {
    return operation([&] { com::out(required) = com::variantBool(passwordRequired_); });
}

HRESULT NetworkStream::put_Password(BSTR password) {
    return operation([&] {
        std::string bytes = com::narrow(password);
        if (!isGatewayPassword(bytes)) {
            throw com::Error(E_INVALIDARG, L"A password has no line ends and no NUL");
        }
        password_ = std::move(bytes);
    });
}

// Gives the error code of the platform, 0 for success.
int NetworkStream::connect(const std::wstring& address, const std::wstring& port) {
    const auto deadline = stream_.clock().after(kConnectTimeout);
    const GatewayAddress target(address);
    ConnectionAttempt attempt(target.host, port);
    if (const int error = finish(attempt, deadline)) return error;
    Socket socket = attempt.takeSocket();
    if (target.throughGateway) {
        GatewayLogin login(socket.get(), password_);
        if (const int error = finish(login, deadline)) return error;
    }

    stream_.close();
    port_.adopt(std::move(socket), address + L":" + port);
    return 0;
}

// Asks an attempt how it goes until it knows.
template <class Attempt>
int NetworkStream::finish(Attempt& attempt, Clock::Moment deadline) {
    const int closings = closings_;
    auto state = attempt.poll();
    while (state == Attempt::State::kGoing) {
        if (hasPassed(deadline)) return WSAETIMEDOUT;
        if (!stream_.idle(deadline) || closings_ != closings) return ERROR_OPERATION_ABORTED;
        state = attempt.poll();
    }
    return state == Attempt::State::kFailed ? attempt.error() : 0;
}

}  // namespace kel::bench
