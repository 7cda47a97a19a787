#pragma once
// The window of the status dialog.

#include <functional>
#include <string>

#include "controls/model/status_layout.h"
#include "ui/dialog.h"

namespace kel::controls {

// What the window shows.
struct Status {
    std::wstring message;
    long minimum = 0;
    long maximum = 100;
    long position = 0;
    bool showsBar = false;
    bool showsCancel = false;
};

// Modeless. What is called while there is no window has no effect on it.
class StatusWindow final : public ui::Dialog {
public:
    // `status` must outlive the window. `cancelled` is called when the user has cancelled, and the
    // window is gone.
    StatusWindow(com::ObjectCore& component, const Status& status, std::function<void()> cancelled)
        : Dialog(&component), status_(status), cancelled_(std::move(cancelled)) {}

    // Creates the window when there is none. Throws.
    void show(HWND owner);
    void hide();

    // The status has changed: these show it at once, for the caller may go on working.
    void showMessage();
    void showProgress();
    void showParts();

    // Handles the messages that wait for the window, as the caller's message loop would.
    void takeMessages();

protected:
    void initialise() override;
    bool command(int control, int notification) override;

private:
    void layOutParts();

    const Status& status_;
    std::function<void()> cancelled_;
    StatusDesign design_;
};

}  // namespace kel::controls
