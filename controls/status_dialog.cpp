#include "controls/status_dialog.h"

#include <utility>

#include "com/text.h"
#include "com/variant.h"

namespace kel::controls {
namespace {

constexpr DISPID kCancelledEvent = 1;

}  // namespace

HRESULT StatusDialog::put_hwndParent(long window) {
    return guarded<IStatusDialog>([&] { owner_ = window; });
}

HRESULT StatusDialog::put_Message(BSTR text) {
    return changing([&] {
        status_.message = com::view(text);
        window_.showMessage();
    });
}

HRESULT StatusDialog::get_Position(long* position) {
    return guarded<IStatusDialog>([&] { com::out(position) = status_.position; });
}

HRESULT StatusDialog::put_Position(long position) {
    return changing([&] {
        status_.position = position;
        useBar();
    });
}

HRESULT StatusDialog::SetProgressRange(long minimum, long maximum) {
    return changing([&] {
        status_.minimum = minimum;
        status_.maximum = maximum;
        useBar();
    });
}

void StatusDialog::useBar() {
    if (!std::exchange(status_.showsBar, true)) window_.showParts();
    window_.showProgress();
}

HRESULT StatusDialog::Show() {
    return changing([&] {
        if (!window_.window()) isCancelled_ = false;
        window_.show(ui::livingWindow(owner_));
    });
}

HRESULT StatusDialog::Hide() {
    return changing([&] { window_.hide(); });
}

HRESULT StatusDialog::get_ShowCancel(VARIANT_BOOL* isShown) {
    return guarded<IStatusDialog>(
        [&] { com::out(isShown) = com::variantBool(status_.showsCancel); });
}

HRESULT StatusDialog::put_ShowCancel(VARIANT_BOOL isShown) {
    return changing([&] {
        const bool shows = com::isTrue(isShown);
        if (std::exchange(status_.showsCancel, shows) != shows) window_.showParts();
    });
}

HRESULT StatusDialog::get_Cancelled(VARIANT_BOOL* isCancelled) {
    return guarded<IStatusDialog2>([&] {
        com::out(isCancelled) = VARIANT_FALSE;
        const com::KeepAlive alive(*this);
        window_.takeMessages();
        *isCancelled = com::variantBool(isCancelled_);
    });
}

void StatusDialog::userCancelled() {
    isCancelled_ = true;
    events_.fire(kCancelledEvent, {});
}

}  // namespace kel::controls
