#pragma once
// The windows that rules need: one that shows an echo, one that waits for a message.

#include <windows.h>

#include <string>

#include "com/error.h"
#include "com/text.h"

namespace kel::conformance {

struct WindowOwner {
    explicit WindowOwner(const wchar_t* kind, DWORD style)
        : handle(CreateWindowW(kind, L"", style, 0, 0, 200, 200, HWND_MESSAGE, nullptr, nullptr,
                               nullptr)) {
        if (!handle) throw com::lastError();
    }
    ~WindowOwner() { DestroyWindow(handle); }
    WindowOwner(const WindowOwner&) = delete;
    WindowOwner& operator=(const WindowOwner&) = delete;

    HWND handle;
};

// An edit control, as hosts have one.
class EchoPane : public WindowOwner {
public:
    EchoPane() : WindowOwner(L"EDIT", ES_MULTILINE | ES_AUTOVSCROLL) {
        SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        const LONG_PTR own =
            SetWindowLongPtrW(handle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
        procedure_ = reinterpret_cast<WNDPROC>(own);
    }

    long number() const { return HandleToLong(handle); }

    std::wstring text() const { return com::windowText(handle); }

    // Whether another thread has put something into it.
    bool isFedFromElsewhere() const { return isFedFromElsewhere_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
        auto* self = reinterpret_cast<EchoPane*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == EM_REPLACESEL && InSendMessage()) self->isFedFromElsewhere_ = true;
        return CallWindowProcW(self->procedure_, window, message, wide, longer);
    }

    WNDPROC procedure_ = nullptr;
    bool isFedFromElsewhere_ = false;
};

// Remembers whether its message came, which only a message loop hands out.
class PostedMessage : public WindowOwner {
public:
    PostedMessage() : WindowOwner(L"BUTTON", BS_CHECKBOX) {
        PostMessageW(handle, BM_SETCHECK, BST_CHECKED, 0);
    }

    bool arrived() const { return SendMessageW(handle, BM_GETCHECK, 0, 0) == BST_CHECKED; }
};

}  // namespace kel::conformance
