#pragma once
// Shows what is received in a window that understands the messages of an edit control.

#include <windows.h>

#include <chrono>
#include <string>
#include <string_view>

namespace kel::bench {

// Texts are collected, because an edit control takes one long text far faster than many short ones.
// They reach the window as wide characters: EM_SETSEL to its end, then EM_REPLACESEL. A window that
// tells a limit (EM_GETLIMITTEXT) loses its oldest lines before the limit is reached.
//
// The window may belong to another thread, may be gone, may hang: one that has not taken a text for
// some seconds is given up until it, or another, is set again. The window's procedure may call back
// into this object.
class Echo {
public:
    // Null: somebody else owns the bytes, nothing is shown.
    void setWindow(HWND window);
    HWND window() const { return window_; }

    // Bytes in the user's code page. NULs, which mean nothing to a reader, are left out.
    void add(std::string_view bytes);
    void add(std::wstring_view text);

    // Shows what was added; flushIfDue only when the last time was long enough ago.
    void flush();
    void flushIfDue();

private:
    void show(std::wstring text);

    HWND window_ = nullptr;
    bool windowHangs_ = false;
    std::wstring pending_;
    // The first byte of a double-byte character whose second one has not come.
    std::string incomplete_;
    std::chrono::steady_clock::time_point lastFlush_{};
};

}  // namespace kel::bench
