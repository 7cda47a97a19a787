#include "hosts/trace/echo_relay.h"

#include "com/error.h"
#include "com/module.h"
#include "hosts/trace/edit_control.h"

namespace kel::trace {
namespace {

constexpr wchar_t kClassName[] = L"KelTraceEchoRelay";

HWND windowOf(long handle) {
    return static_cast<HWND>(LongToHandle(handle));
}

// The window's own affairs, which are nothing to the host's window.
bool isOwn(UINT message) {
    return message == WM_NCCREATE || message == WM_CREATE || message == WM_DESTROY ||
           message == WM_NCDESTROY || message == WM_GETMINMAXINFO || message == WM_NCCALCSIZE ||
           message == WM_MOVE || message == WM_SIZE;
}

}  // namespace

EchoRelay::~EchoRelay() {
    if (!window_) return;
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

long EchoRelay::handleFor(long target) {
    if (!IsWindow(windowOf(target))) return target;
    if (!window_) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = &EchoRelay::procedure;
        windowClass.hInstance = com::moduleInstance();
        windowClass.lpszClassName = kClassName;
        if (!RegisterClassW(&windowClass) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
            throw com::lastError();
        }
        window_ = CreateWindowExW(0, kClassName, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  com::moduleInstance(), nullptr);
        if (!window_) throw com::lastError();
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    return HandleToLong(window_);
}

long EchoRelay::targetOf(long handle) const {
    return window_ && handle == HandleToLong(window_) ? target_ : handle;
}

void EchoRelay::setTarget(long target) {
    target_ = target;
    targetHangs_ = false;
}

LRESULT CALLBACK EchoRelay::procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto* self = reinterpret_cast<EchoRelay*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || isOwn(message)) return DefWindowProcW(window, message, first, second);
    return self->receive(message, first, second);
}

LRESULT EchoRelay::receive(UINT message, WPARAM first, LPARAM second) {
    const auto* text = reinterpret_cast<const wchar_t*>(second);
    const HWND own = window_;
    const HWND target = windowOf(target_);
    if (message == EM_REPLACESEL && text && *text != L'\0') tell_(text);
    LRESULT answer = 0;
    if (targetHangs_) return answer;
    // The message may bring about the end of this object.
    const bool taken = sendTo(target, message, first, second, answer);
    if (!taken && IsWindow(target) && IsWindow(own)) targetHangs_ = true;
    return answer;
}

void unregisterEchoRelays() {
    UnregisterClassW(kClassName, com::moduleInstance());
}

}  // namespace kel::trace
