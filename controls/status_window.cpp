#include "controls/status_window.h"

#include <commctrl.h>

#include "com/message_loop.h"
#include "resources/resource_ids.h"

namespace kel::controls {

void StatusWindow::show(HWND owner) {
    if (!window()) {
        create(IDD_STATUS, owner);
        // Again, for it has its size only now.
        ui::centreWindow(window(), GetWindow(window(), GW_OWNER));
    }
    ShowWindow(window(), SW_SHOW);
    UpdateWindow(window());
}

void StatusWindow::hide() {
    if (window()) ShowWindow(window(), SW_HIDE);
}

void StatusWindow::showMessage() {
    if (!window()) return;
    setText(IDC_STATUS_MESSAGE, status_.message);
    UpdateWindow(control(IDC_STATUS_MESSAGE));
}

void StatusWindow::showProgress() {
    if (!window()) return;
    const HWND bar = control(IDC_STATUS_BAR);
    SendMessageW(bar, PBM_SETRANGE32, static_cast<WPARAM>(status_.minimum), status_.maximum);
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(status_.position), 0);
    RedrawWindow(bar, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

void StatusWindow::showParts() {
    if (!window()) return;
    layOutParts();
    RedrawWindow(window(), nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

void StatusWindow::takeMessages() {
    if (window()) com::runWaitingMessages(window());
}

void StatusWindow::initialise() {
    design_ = {place().height(), placeOf(IDC_STATUS_BAR), placeOf(IDCANCEL)};
    showMessage();
    showProgress();
    layOutParts();
}

bool StatusWindow::command(int control, int notification) {
    const bool known = Dialog::command(control, notification);
    if (control == IDCANCEL) cancelled_();
    return known;
}

void StatusWindow::layOutParts() {
    const StatusLayout layout = layOut(design_, status_.showsBar, status_.showsCancel);
    Dialog::show(IDC_STATUS_BAR, status_.showsBar);
    ui::Rectangle cancel = design_.cancel;
    cancel.top = layout.cancelTop;
    cancel.bottom = cancel.top + design_.cancel.height();
    setPlaceOf(IDCANCEL, cancel);
    Dialog::show(IDCANCEL, status_.showsCancel);
    resize(place().width(), layout.windowHeight);
}

}  // namespace kel::controls
