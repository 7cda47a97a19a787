#pragma once
// What a replay does with an echo window: appends texts, as the link did.

#include <windows.h>

#include <string>

namespace kel::trace {

// Appends a text to a window that understands the messages of an edit control; one that tells a
// limit loses its oldest text first. A window that is gone or hangs takes nothing.
void appendText(HWND window, const std::wstring& text);

// Sends a message and waits only as long as the window is alive. False when it did not take it.
bool sendTo(HWND window, UINT message, WPARAM first, LPARAM second, LRESULT& answer);

}  // namespace kel::trace
