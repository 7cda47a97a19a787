#pragma once
// The cursor that tells the user to wait.

#include <windows.h>

namespace kel::ui {

// Shown as long as it lives; then the former one is back.
class WaitCursor {
public:
    WaitCursor() : before_(SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT)))) {}
    ~WaitCursor() { SetCursor(before_); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    HCURSOR before_;
};

}  // namespace kel::ui
