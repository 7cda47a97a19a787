#include "hosts/keldesk/accelerators.h"

#include "com/error.h"

namespace kel::keldesk {

Accelerators* Accelerators::present = nullptr;

Accelerators::Accelerators(HWND window, WORD resource)
    : window_(window),
      keys_(LoadAcceleratorsW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource))),
      hook_(SetWindowsHookExW(WH_GETMESSAGE, see, nullptr, GetCurrentThreadId())) {
    if (!keys_ || !hook_) throw com::lastError();
    present = this;
}

Accelerators::~Accelerators() {
    present = nullptr;
    UnhookWindowsHookEx(hook_);
}

LRESULT CALLBACK Accelerators::see(int code, WPARAM wide, LPARAM longer) {
    auto* message = reinterpret_cast<MSG*>(longer);
    const Accelerators* self = present;
    // A window that is disabled waits for a dialog.
    const bool isMeant = code == HC_ACTION && wide == PM_REMOVE && self &&
                         IsWindowEnabled(self->window_) &&
                         (message->hwnd == self->window_ || IsChild(self->window_, message->hwnd));
    if (isMeant && TranslateAcceleratorW(self->window_, self->keys_, message))
        message->message = WM_NULL;
    return CallNextHookEx(nullptr, code, wide, longer);
}

}  // namespace kel::keldesk
