#include "bench/link/network_stream.h"

namespace kel::bench {
namespace {

constexpr long kConnectTimeout = 10000;

}  // namespace

HRESULT NetworkStream::ConnectTo(BSTR address, BSTR port, VARIANT_BOOL* result) {
    int error = 0;
    const HRESULT code = operation([&] {
        com::out(result) = VARIANT_FALSE;
        error = connect(std::wstring(com::view(address)), std::wstring(com::view(port)));
        *result = com::variantBool(error == 0);
    });
    // Callers read the reason here; nothing may come in between.
    SetLastError(static_cast<DWORD>(error));
    return code;
}

// Gives the error code of the platform, 0 for success.
int NetworkStream::connect(const std::wstring& address, const std::wstring& port) {
    const auto deadline = stream_.clock().after(kConnectTimeout);
    ConnectionAttempt attempt(address, port);
    auto state = attempt.poll();
    while (state == ConnectionAttempt::State::kGoing) {
        if (hasPassed(deadline)) return WSAETIMEDOUT;
        if (!stream_.idle(deadline)) return ERROR_OPERATION_ABORTED;
        state = attempt.poll();
    }
    if (state == ConnectionAttempt::State::kFailed) return attempt.error();

    stream_.close();
    port_.adopt(attempt.takeSocket(), address + L":" + port);
    return 0;
}

}  // namespace kel::bench
