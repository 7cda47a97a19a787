#pragma once
// A window that nobody sees: it only takes messages.

#include <windows.h>

namespace kel::kelrun {

// Belongs to the thread that makes it. Throws com::Error when it cannot be made.
class MessageWindow {
public:
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    HWND window() const { return window_; }

protected:
    MessageWindow();
    virtual ~MessageWindow();

    // Called by the system: nothing may be thrown.
    virtual LRESULT handle(UINT message, WPARAM first, LPARAM second) noexcept;

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM first, LPARAM second);

    HWND window_;
};

}  // namespace kel::kelrun
