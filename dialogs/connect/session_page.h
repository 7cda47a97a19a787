#pragma once
// What the pages of the new session dialog have in common.

#include <exception>

#include "dialogs/connect/form.h"

namespace kel::connect {

// A page sends it to its dialog to have the dialog confirmed.
UINT confirmMessage();

class SessionPage {
public:
    virtual ~SessionPage() = default;
    SessionPage() = default;
    SessionPage(const SessionPage&) = delete;
    SessionPage& operator=(const SessionPage&) = delete;

    virtual ui::Dialog& dialog() = 0;
    // Connects, or opens the file. False when that did not go well: the page shows why. Throws
    // com::Error when the link fails.
    virtual bool carryOut() = 0;
    // The same without asking the user anything.
    virtual bool carryOutAlone() { return carryOut(); }
    // Shows a text in the page's status line.
    virtual void tell(const std::wstring& text) = 0;
};

// A form as a page: what ends a dialog is for the dialog around it.
template <class Derived>
class SessionPageOf : public Derived, public SessionPage {
public:
    using Derived::Derived;

    ui::Dialog& dialog() override { return *this; }
    void tell(const std::wstring& text) override { this->showStatus(text); }

protected:
    void confirm() override { SendMessageW(GetParent(this->window()), confirmMessage(), 0, 0); }

    bool command(int control, int notification) override {
        if (control != IDCANCEL) return Derived::command(control, notification);
        PostMessageW(GetParent(this->window()), WM_COMMAND, IDCANCEL, 0);
        return true;
    }
};

}  // namespace kel::connect
