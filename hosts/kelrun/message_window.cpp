#include "hosts/kelrun/message_window.h"

#include "com/error.h"

namespace kel::kelrun {
namespace {

constexpr wchar_t kClassName[] = L"KelRunMessageWindow";

}  // namespace

MessageWindow::MessageWindow() {
    // A class of wide characters: narrow texts sent to its windows arrive converted.
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &MessageWindow::receive;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kClassName;
    if (!RegisterClassW(&windowClass) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
        throw com::lastError();
    }
    window_ = CreateWindowExW(0, kClassName, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              windowClass.hInstance, nullptr);
    if (!window_) throw com::lastError();
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

MessageWindow::~MessageWindow() {
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

LRESULT MessageWindow::handle(UINT message, WPARAM first, LPARAM second) noexcept {
    return DefWindowProcW(window_, message, first, second);
}

LRESULT CALLBACK MessageWindow::receive(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto* self = reinterpret_cast<MessageWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self ? self->handle(message, first, second)
                : DefWindowProcW(window, message, first, second);
}

}  // namespace kel::kelrun
