#pragma once
// Keeps a control from painting itself after each of many changes.

#include <windows.h>

namespace kel::ui {

class RedrawPause {
public:
    explicit RedrawPause(HWND control) : control_(control) {
        SendMessageW(control_, WM_SETREDRAW, FALSE, 0);
    }
    ~RedrawPause() {
        SendMessageW(control_, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(control_, nullptr, TRUE);
    }
    RedrawPause(const RedrawPause&) = delete;
    RedrawPause& operator=(const RedrawPause&) = delete;

private:
    HWND control_;
};

}  // namespace kel::ui
