#include "dialogs/connect/port_icon.h"

#include <algorithm>

namespace kel::connect {
namespace {

// Selects an object as long as it lives, and deletes it then.
class Selected {
public:
    Selected(HDC device, HGDIOBJ object) : device_(device), object_(object) {
        before_ = SelectObject(device, object);
    }
    ~Selected() {
        SelectObject(device_, before_);
        DeleteObject(object_);
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

private:
    HDC device_;
    HGDIOBJ object_;
    HGDIOBJ before_;
};

// Of the two the one that stands out from the face of a button; schemes of high contrast have dark
// ones.
COLORREF onButton(COLORREF forLight, COLORREF forDark) {
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    const int brightness = 3 * GetRValue(face) + 6 * GetGValue(face) + GetBValue(face);
    return brightness >= 10 * 128 ? forLight : forDark;
}

COLORREF outline() {
    return GetSysColor(COLOR_BTNTEXT);
}

// A connector seen from the front: broad above, narrow below.
void drawShell(HDC device, int left, int top, int size) {
    const int edge = size / 8;
    const POINT corners[] = {{left + edge, top + size / 4},
                             {left + size - edge - 1, top + size / 4},
                             {left + size - 2 * edge - 1, top + size * 3 / 4},
                             {left + 2 * edge, top + size * 3 / 4}};
    Polygon(device, corners, static_cast<int>(std::size(corners)));
}

void drawPins(HDC device, int left, int top, int size, COLORREF colour) {
    const int pin = std::max(1, size / 12);
    const Selected brush(device, CreateSolidBrush(colour));
    const auto row = [&](int count, int y) {
        const int pitch = size / 6;
        const int first = left + (size - (count - 1) * pitch) / 2;
        for (int i = 0; i < count; ++i)
            PatBlt(device, first + i * pitch - pin / 2, y, pin + 1, pin + 1, PATCOPY);
    };
    row(4, top + size * 3 / 8);
    row(3, top + size * 9 / 16);
}

void drawTick(HDC device, int left, int top, int size) {
    const Selected pen(device, CreatePen(PS_SOLID, std::max(2, size / 8),
                                         onButton(RGB(0, 128, 0), RGB(0, 255, 0))));
    const POINT stroke[] = {{left + size / 4, top + size / 2},
                            {left + size * 7 / 16, top + size * 3 / 4},
                            {left + size * 7 / 8, top + size / 8}};
    Polyline(device, stroke, static_cast<int>(std::size(stroke)));
}

void drawBar(HDC device, int left, int top, int size) {
    const Selected pen(device, CreatePen(PS_SOLID, std::max(2, size / 8),
                                         onButton(RGB(192, 0, 0), RGB(255, 128, 128))));
    const int radius = size / 4;
    const int right = left + size - 1;
    const int bottom = top + size - 1;
    const HGDIOBJ before = SelectObject(device, GetStockObject(NULL_BRUSH));
    Ellipse(device, right - 2 * radius, bottom - 2 * radius, right, bottom);
    SelectObject(device, before);
    MoveToEx(device, right - 2 * radius + 1, bottom - radius, nullptr);
    LineTo(device, right - 1, bottom - radius);
}

}  // namespace

void drawPortIcon(HDC device, int left, int top, int size, PortState state) {
    const bool isAbsent = state == PortState::Absent;
    SetBkMode(device, TRANSPARENT);
    {
        const Selected pen(device, CreatePen(isAbsent ? PS_DOT : PS_SOLID, 1,
                                             isAbsent ? GetSysColor(COLOR_GRAYTEXT) : outline()));
        if (isAbsent) {
            const HGDIOBJ before = SelectObject(device, GetStockObject(NULL_BRUSH));
            drawShell(device, left, top, size);
            SelectObject(device, before);
            return;
        }
        const Selected brush(device, CreateSolidBrush(GetSysColor(COLOR_WINDOW)));
        drawShell(device, left, top, size);
    }
    drawPins(device, left, top, size, outline());
    if (state == PortState::Selected) drawTick(device, left, top, size);
    if (state == PortState::Busy) drawBar(device, left, top, size);
}

}  // namespace kel::connect
