#include "hosts/keldesk/scaled.h"

#include <algorithm>

namespace kel::keldesk {
namespace {

RECT workArea() {
    RECT area{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return area;
}

}  // namespace

int scaled(int pixels) {
    const HDC screen = GetDC(nullptr);
    const int resolution = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return MulDiv(pixels, resolution, 96);
}

SIZE scaledToFit(int width, int height) {
    const RECT area = workArea();
    return {std::min<LONG>(scaled(width), area.right - area.left),
            std::min<LONG>(scaled(height), area.bottom - area.top)};
}

POINT inWorkArea(POINT wish, SIZE size) {
    const RECT area = workArea();
    return {std::max(area.left, std::min(wish.x, area.right - size.cx)),
            std::max(area.top, std::min(wish.y, area.bottom - size.cy))};
}

}  // namespace kel::keldesk
