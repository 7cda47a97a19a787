#pragma once
// Sizes in dialog units, before there is a dialog.

#include <windows.h>

#include <memory>
#include <string_view>
#include <type_traits>

namespace kel::ui {

struct UnitSize {
    int width = 0;
    int height = 0;
};

// Measures in the font of all dialogs here, at the resolution of the screen.
class DialogMetrics {
public:
    DialogMetrics();

    // How much room a line of text takes, rounded up.
    int textWidth(std::wstring_view text) const;

    // The client area of the largest dialog that fits the work area of the monitor of `over`, or of
    // the first monitor where that is null.
    UnitSize largestClient(HWND over) const;

    SIZE pixels(UnitSize units) const;

    int scrollBarWidth() const { return unitsAcross(GetSystemMetrics(SM_CXVSCROLL)); }

private:
    struct Free {
        void operator()(HFONT font) const { DeleteObject(font); }
        void operator()(HDC device) const { DeleteDC(device); }
    };

    int unitsAcross(int pixels) const { return (pixels * 4 + baseWidth_ - 1) / baseWidth_; }

    std::unique_ptr<std::remove_pointer_t<HFONT>, Free> font_;
    std::unique_ptr<std::remove_pointer_t<HDC>, Free> device_;  // goes before its font
    int baseWidth_ = 0;
    int baseHeight_ = 0;
};

// The client area of a dialog from the resources in the font of all dialogs here. Throws com::Error
// when there is no such dialog.
UnitSize clientOf(WORD resource);

}  // namespace kel::ui
