#include "dialogs/service/polling_dialog.h"

#include <utility>

#include "com/scoped.h"

namespace kel::service {
namespace {

constexpr UINT_PTR kPollTimer = 1;
constexpr UINT kPollPeriod = 50;  // milliseconds
constexpr wchar_t kSilent[] = L"The instrument sends no data";

}  // namespace

void PollingDialog::startPolling() {
    if (!SetTimer(window(), kPollTimer, kPollPeriod, nullptr)) throw com::lastError();
}

void PollingDialog::timer(UINT_PTR) {
    if (!isAtWork_) poll();
}

void PollingDialog::watch(bool isNew) {
    const ULONGLONG now = GetTickCount64();
    if (silence_ && isNew) silence_->heard(now);
    const bool isSilent = silence_ && silence_->isSilent(now);
    if (isSilent == covered_.has_value()) return;
    if (isSilent) {
        covered_ = text(statusLine());
        showStatus(kSilent);
        return;
    }
    // What else was told meanwhile stays.
    if (text(statusLine()) == kSilent) showStatus(*covered_);
    covered_.reset();
}

bool PollingDialog::command(int control, int) {
    if (isAtWork_) {
        wasCancelled_ = wasCancelled_ || control == IDCANCEL;
        return true;
    }
    // Also where the button fails.
    struct Afterwards {
        ~Afterwards() {
            if (std::exchange(dialog.wasCancelled_, false) && !dialog.hasEnded())
                PostMessageW(dialog.window(), WM_COMMAND, IDCANCEL, 0);
        }
        PollingDialog& dialog;
    } const afterwards{*this};
    const com::Scoped working(isAtWork_, true);
    if (hasEnded()) return true;
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
