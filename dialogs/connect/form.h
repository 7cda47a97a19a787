#pragma once
// A dialog with one thing to do: its default button, Enter and whatever else stands for it.

#include "ui/dialog.h"

namespace kel::connect {

class Form : public ui::Dialog {
public:
    // The dialog is being left: what waits for the link ends as soon as it can.
    virtual void leave() {}

protected:
    using Dialog::Dialog;

    // The user wants it done.
    virtual void confirm() = 0;

    bool command(int control, int notification) override {
        if (control == IDCANCEL) leave();
        if (control != IDOK) return Dialog::command(control, notification);
        confirm();
        return true;
    }
};

}  // namespace kel::connect
