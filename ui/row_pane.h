#pragma once
// A part of a dialog that shows some of its rows and scrolls to the others.

#include "ui/dialog.h"
#include "ui/model/scrolling.h"

namespace kel::ui {

// Its rows are equally high, and the pane as high as a whole number of them. Scrolls by its bar,
// the mouse wheel, and to a control that gets the focus.
class RowPane : public Dialog {
public:
    RowPane(int rows, int visibleRows, int rowHeight)
        : scrolling_{rows, visibleRows}, rowHeight_(rowHeight) {}

    // An empty one of the size of the view, in dialog units.
    static DialogTemplate description(short width, short height);

    // Shows it in its dialog, before all other controls in tab order.
    void open(const DialogTemplate& description, HWND parent, const UnitRectangle& place);

    // For the dialog, whose other controls get the messages of the mouse wheel as well.
    void turnWheel(int distance);

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    std::optional<LRESULT> intercepted(HWND control, UINT message, WPARAM wide,
                                       LPARAM longer) override;

private:
    void scroll(int request);
    void scrollTo(int first);
    void reveal(HWND control);
    int pixels(int rows) const;

    Scrolling scrolling_;
    int rowHeight_;
    int wheelRest_ = 0;
};

}  // namespace kel::ui
