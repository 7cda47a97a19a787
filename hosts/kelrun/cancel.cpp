#include "hosts/kelrun/cancel.h"

#include <atomic>
#include <utility>

#include "hosts/shared/model/failure.h"

namespace kel::kelrun {
namespace {

constexpr UINT kCancelMessage = WM_APP;

std::atomic<HWND> target;
std::atomic<bool> isAskedAlready;

bool isInterrupt(DWORD kind) {
    return kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT;
}

// No orderly end: the thread that would do it is the one that does not listen.
BOOL WINAPI endCancelled(DWORD kind) {
    return isInterrupt(kind) &&
           TerminateProcess(GetCurrentProcess(), static_cast<UINT>(host::ExitCode::kCancelled));
}

BOOL WINAPI takeInterrupt(DWORD kind) {
    if (isInterrupt(kind) && isAskedAlready.exchange(true)) return endCancelled(kind);
    PostMessageW(target, kCancelMessage, 0, 0);
    if (!isInterrupt(kind))
        Sleep(INFINITE);  // the console closes: the process ends when this returns
    return TRUE;
}

}  // namespace

void endAtInterrupt() {
    if (!SetConsoleCtrlHandler(endCancelled, TRUE)) throw com::lastError();
}

CancelOnInterrupt::CancelOnInterrupt(com::ComPtr<IPreprocessorControl> preprocessor)
    : preprocessor_(std::move(preprocessor)) {
    target = window();
    if (!SetConsoleCtrlHandler(takeInterrupt, TRUE)) throw com::lastError();
}

CancelOnInterrupt::~CancelOnInterrupt() {
    SetConsoleCtrlHandler(takeInterrupt, FALSE);
    target = nullptr;
}

LRESULT CancelOnInterrupt::handle(UINT message, WPARAM first, LPARAM second) noexcept {
    if (message != kCancelMessage) return MessageWindow::handle(message, first, second);
    requested_ = true;
    preprocessor_->Cancel();
    return 0;
}

}  // namespace kel::kelrun
