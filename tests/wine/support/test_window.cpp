#include "tests/wine/support/test_window.h"

#include <utility>

namespace kel::bench::test {
namespace {

constexpr UINT kRunHandler = WM_APP;

}  // namespace

TestWindow::TestWindow()
    : window_(
          CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
}

TestWindow::~TestWindow() {
    DestroyWindow(window_);
}

void TestWindow::post(std::function<void()> handler) {
    handler_ = std::move(handler);
    PostMessageW(window_, kRunHandler, 0, 0);
}

LRESULT TestWindow::procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto& self = *reinterpret_cast<TestWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (message) {
        case EM_REPLACESEL:
            self.shown_ += reinterpret_cast<const wchar_t*>(second);
            return 0;
        case kRunHandler:
            std::exchange(self.handler_, {})();
            return 0;
        default:
            return DefWindowProcW(window, message, first, second);
    }
}

}  // namespace kel::bench::test
