#pragma once
// A window that shows nothing: it collects what is echoed and runs a handler on request.

#include <windows.h>

#include <functional>
#include <string>

namespace kel::bench::test {

class TestWindow {
public:
    TestWindow();
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    HWND handle() const { return window_; }
    long number() const { return HandleToLong(window_); }

    // Everything that was put at the end of its text.
    const std::wstring& shown() const { return shown_; }
    void clear() { shown_.clear(); }

    // Runs a function when the thread's message loop comes to it.
    void post(std::function<void()> handler);

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second);

    HWND window_;
    std::wstring shown_;
    std::function<void()> handler_;
};

}  // namespace kel::bench::test
