#include "ui/row_pane.h"

namespace kel::ui {

DialogTemplate RowPane::description(short width, short height) {
    return {L"", width, height, WS_CHILD | WS_VISIBLE | WS_VSCROLL | DS_CONTROL,
            WS_EX_CONTROLPARENT};
}

void RowPane::open(const DialogTemplate& description, HWND parent, const UnitRectangle& place) {
    create(description, parent);
    RECT area{place.left, place.top, place.left + place.width, place.top + place.height};
    MapDialogRect(parent, &area);
    SetWindowPos(window(), HWND_TOP, area.left, area.top, area.right - area.left,
                 area.bottom - area.top, SWP_NOACTIVATE);
}

void RowPane::initialise() {
    SCROLLINFO information{};
    information.cbSize = sizeof information;
    information.fMask = SIF_RANGE | SIF_PAGE;
    information.nMax = scrolling_.rows - 1;
    information.nPage = static_cast<UINT>(scrolling_.visible);
    SetScrollInfo(window(), SB_VERT, &information, FALSE);
    for (HWND child = GetWindow(window(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        intercept(child);
}

// OK and Cancel are the business of the whole dialog.
bool RowPane::command(int, int) {
    return false;
}

std::optional<LRESULT> RowPane::handle(UINT message, WPARAM wide, LPARAM) {
    if (message == WM_VSCROLL) {
        scroll(LOWORD(wide));
        return 0;
    }
    if (message == WM_MOUSEWHEEL) {
        turnWheel(GET_WHEEL_DELTA_WPARAM(wide));
        return 0;
    }
    return std::nullopt;
}

// Not every control tells its dialog that it has the focus, and a drop-down list would take the
// wheel for itself.
std::optional<LRESULT> RowPane::intercepted(HWND control, UINT message, WPARAM wide, LPARAM) {
    if (message == WM_SETFOCUS) reveal(control);
    if (message != WM_MOUSEWHEEL || SendMessageW(control, CB_GETDROPPEDSTATE, 0, 0))
        return std::nullopt;
    turnWheel(GET_WHEEL_DELTA_WPARAM(wide));
    return 0;
}

void RowPane::turnWheel(int distance) {
    UINT rows = 3;
    SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &rows, 0);
    if (rows > static_cast<UINT>(scrolling_.visible)) rows = static_cast<UINT>(scrolling_.visible);
    // Fine wheels send parts of a notch.
    wheelRest_ += distance * static_cast<int>(rows);
    const int whole = wheelRest_ / WHEEL_DELTA;
    wheelRest_ -= whole * WHEEL_DELTA;
    scrollTo(scrolling_.first - whole);
}

void RowPane::scroll(int request) {
    SCROLLINFO information{};
    information.cbSize = sizeof information;
    information.fMask = SIF_TRACKPOS;
    switch (request) {
        case SB_LINEUP:
            return scrollTo(scrolling_.first - 1);
        case SB_LINEDOWN:
            return scrollTo(scrolling_.first + 1);
        case SB_PAGEUP:
            return scrollTo(scrolling_.first - scrolling_.visible);
        case SB_PAGEDOWN:
            return scrollTo(scrolling_.first + scrolling_.visible);
        case SB_TOP:
            return scrollTo(0);
        case SB_BOTTOM:
            return scrollTo(scrolling_.rows);
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            GetScrollInfo(window(), SB_VERT, &information);
            return scrollTo(information.nTrackPos);
        default:
            return;
    }
}

void RowPane::scrollTo(int wanted) {
    const int first = scrolling_.to(wanted);
    const int distance = pixels(scrolling_.first) - pixels(first);
    if (distance == 0) return;
    scrolling_.first = first;
    SetScrollPos(window(), SB_VERT, first, TRUE);
    ScrollWindowEx(window(), 0, distance, nullptr, nullptr, nullptr, nullptr,
                   SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
}

void RowPane::reveal(HWND control) {
    RECT place{};
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, window(), reinterpret_cast<POINT*>(&place), 2);
    const int middle = static_cast<int>(place.top + place.bottom) / 2 + pixels(scrolling_.first);
    scrollTo(scrolling_.showing(middle * scrolling_.rows / pixels(scrolling_.rows)));
}

int RowPane::pixels(int rows) const {
    RECT area{0, 0, 0, rows * rowHeight_};
    MapDialogRect(window(), &area);
    return static_cast<int>(area.bottom);
}

}  // namespace kel::ui
