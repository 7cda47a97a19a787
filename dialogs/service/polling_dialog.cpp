#include "dialogs/service/polling_dialog.h"

#include <utility>

#include "com/scoped.h"

namespace kel::service {
namespace {

constexpr UINT_PTR kPollTimer = 1;
constexpr UINT kPollPeriod = 50;  // milliseconds

}  // namespace

void PollingDialog::startPolling() {
    if (!SetTimer(window(), kPollTimer, kPollPeriod, nullptr)) throw com::lastError();
}

void PollingDialog::timer(UINT_PTR) {
    if (!isAtWork_) poll();
}

bool PollingDialog::command(int control, int) {
    if (isAtWork_) return true;
    const com::Scoped working(isAtWork_, true);
    if (control == IDCANCEL) {
        close();
    } else {
        hasFailedToLeave_ = false;
        press(control);
    }
    return true;
}

void PollingDialog::close() {
    try {
        leave();
    } catch (const com::Error&) {
        // It is told once; a link that has gone for good must not keep the dialog open.
        if (!std::exchange(hasFailedToLeave_, true)) throw;
    }
    end(IDCANCEL);
}

void PollingDialog::offer(std::initializer_list<int> buttons, std::initializer_list<int> others) {
    for (const int button : buttons)
        enable(button, true);
    for (const int button : others) {
        if (GetFocus() == control(button)) {
            const auto next = reinterpret_cast<WPARAM>(control(*buttons.begin()));
            SendMessageW(window(), WM_NEXTDLGCTL, next, TRUE);
        }
        enable(button, false);
    }
}

}  // namespace kel::service
