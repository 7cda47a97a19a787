#include "script/closable_box.h"

#include <utility>

namespace kel::script {
namespace {

constexpr ULONG_PTR kDialogClass = 32770;

}  // namespace

// The platform does not tell which window it makes for a box: it is the thread's next dialog.
class ClosableBox::Watch {
public:
    explicit Watch(HWND& box)
        : box_(box),
          before_(std::exchange(newest, this)),
          hook_(SetWindowsHookExW(WH_CBT, observe, nullptr, GetCurrentThreadId())) {}
    ~Watch() {
        end();
        newest = before_;
        box_ = nullptr;
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    static LRESULT CALLBACK observe(int code, WPARAM wide, LPARAM longer) {
        const HWND window = reinterpret_cast<HWND>(wide);
        if (code == HCBT_CREATEWND && newest &&
            GetClassLongPtrW(window, GCW_ATOM) == kDialogClass) {
            newest->box_ = window;
            newest->end();
        }
        return CallNextHookEx(nullptr, code, wide, longer);
    }
    void end() {
        if (hook_) UnhookWindowsHookEx(std::exchange(hook_, nullptr));
    }

    static inline thread_local Watch* newest = nullptr;

    HWND& box_;
    Watch* before_;
    HHOOK hook_;
};

int ClosableBox::ask(HWND owner, const com::Bstr& text) {
    const Watch watch(box_);
    return MessageBoxW(owner, text.get(), L"Message", MB_OKCANCEL | MB_ICONEXCLAMATION);
}

void ClosableBox::cancel() {
    if (box_) EndDialog(box_, IDCANCEL);
}

}  // namespace kel::script
