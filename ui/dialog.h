#pragma once
// The base of every dialog: a dialog overrides the handlers it needs and binds its model to its
// controls in them.

#include <windows.h>

#include <exception>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "com/object.h"
#include "com/scoped.h"
#include "ui/dialog_template.h"
#include "ui/model/placement.h"

namespace kel::ui {

// Belongs to the thread that shows it. Handlers may throw: the handler ends, the failure's text is
// shown, and the dialog lives on.
class Dialog {
public:
    // `component`, when given, is kept alive while a handler runs, and must outlive the dialog.
    explicit Dialog(com::ObjectCore* component = nullptr) : component_(component) {}
    // Destroys the window.
    virtual ~Dialog();
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    // Runs the dialog until a handler ends it, and gives the result of that: IDOK for success, 0
    // when the program ends meanwhile. The owner may be null or gone. When the dialog could not
    // initialise fully and did not end with IDOK, that failure is thrown; so is com::Error where no
    // window could be made.
    INT_PTR runModal(WORD resource, HWND owner);
    INT_PTR runModal(const DialogTemplate& description, HWND owner);

    // Makes a modeless dialog, not yet visible unless its description says so. Throws as above.
    void create(WORD resource, HWND owner);
    void create(const DialogTemplate& description, HWND owner);
    // The same for a part of another window, which holds nothing but the platform's own controls.
    void createPart(WORD resource, HWND parent);

    // Null while there is none.
    HWND window() const { return window_; }

    // Something is being done that takes its time.
    bool isBusy() const { return isBusy_; }

    // Throws the failure for which the dialog could not initialise, if there was one.
    void rethrowInitialisationFailure() const {
        if (initialisationFailure_) std::rethrow_exception(initialisationFailure_);
    }

protected:
    // Of a dialog that was given one.
    com::ObjectCore& component() const { return *component_; }

    // The controls exist, the window stands over its owner and is not yet visible. Override
    // initialFocus() to choose where the focus goes.
    virtual void initialise() {}
    // Null for the first control in tab order.
    virtual HWND initialFocus() { return nullptr; }

    // A control tells something. False when it is none that the dialog knows. By default OK and
    // Cancel end the dialog with their own identifiers.
    virtual bool command(int control, int notification);
    virtual std::optional<LRESULT> notify(const NMHDR&) { return std::nullopt; }

    // Not called while one of its own calls for the same timer still runs.
    virtual void timer(UINT_PTR) {}

    // Every other message; nothing for those that the dialog does not handle.
    virtual std::optional<LRESULT> handle(UINT, WPARAM, LPARAM) { return std::nullopt; }

    // Lets intercepted() see the messages of a control before the control does. Throws.
    void intercept(HWND control);
    // Nothing for those that the control is to handle as usual.
    virtual std::optional<LRESULT> intercepted(HWND, UINT, WPARAM, LPARAM) { return std::nullopt; }

    // The window is gone; the object may be released from here.
    virtual void destroyed() {}

    // The control that shows what happens; 0 for none.
    virtual int statusLine() const { return 0; }

    // What a handler failed with: shown in the status line, or in a message box where there is
    // none.
    virtual void showFailure(const std::wstring& text);

    // Shows a text in the status line at once: what follows may take long.
    void showStatus(std::wstring_view text);

    void end(INT_PTR result);
    // True from then on, also while its window is still there.
    bool hasEnded() const { return !window_ || hasEnded_; }

    // While one lives the user can only cancel, and sees the cursor that tells to wait.
    class Busy {
    public:
        explicit Busy(Dialog& dialog);
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        com::Scoped<bool> isBusy_;
        HCURSOR before_;
    };

    HWND control(int identifier) const { return GetDlgItem(window_, identifier); }
    std::wstring text(int identifier) const;
    void setText(int identifier, std::wstring_view text);
    void enable(int identifier, bool enabled);
    void show(int identifier, bool visible);
    // Of the window, in the coordinates of the screen; of a control, inside the client area.
    Rectangle place() const;
    Rectangle placeOf(int identifier) const;
    void setPlaceOf(int identifier, const Rectangle& place);
    void resize(int width, int height);

private:
    static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer);

    static LRESULT CALLBACK controlProcedure(HWND control, UINT message, WPARAM wide, LPARAM longer,
                                             UINT_PTR identifier, DWORD_PTR dialog);

    INT_PTR dispatch(UINT message, WPARAM wide, LPARAM longer) noexcept;
    std::optional<LRESULT> dispatchControl(HWND control, UINT message, WPARAM wide,
                                           LPARAM longer) noexcept;
    INT_PTR process(UINT message, WPARAM wide, LPARAM longer);
    INT_PTR begin();
    void tick(UINT_PTR identifier);
    void reportFailure() noexcept;
    template <class Run>
    INT_PTR runAs(bool isModal, Run&& run);

    com::ObjectCore* component_;
    HWND window_ = nullptr;
    bool isModal_ = false;
    bool isInitialising_ = false;
    bool isBusy_ = false;
    bool hasEnded_ = false;
    INT_PTR result_ = 0;
    std::exception_ptr initialisationFailure_;
    std::set<UINT_PTR> runningTimers_;
};

// The window, or null where the handle names none (any more).
HWND livingWindow(LONG_PTR handle);

// Moves a window over another one, inside the work area of that one's monitor; over the middle of
// the work area where the other is missing, hidden or minimised.
void centreWindow(HWND window, HWND over);

}  // namespace kel::ui
