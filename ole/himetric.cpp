#include "ole/himetric.h"

namespace kel::ole {
namespace {

constexpr int kHimetricInAnInch = 2540;

SIZE pixelsInAnInch() {
    const HDC screen = GetDC(nullptr);
    const SIZE resolution{GetDeviceCaps(screen, LOGPIXELSX), GetDeviceCaps(screen, LOGPIXELSY)};
    ReleaseDC(nullptr, screen);
    return resolution;
}

}  // namespace

SIZE toHimetric(SIZE pixels) {
    const SIZE inch = pixelsInAnInch();
    return {MulDiv(pixels.cx, kHimetricInAnInch, inch.cx),
            MulDiv(pixels.cy, kHimetricInAnInch, inch.cy)};
}

SIZE toPixels(SIZE himetric) {
    const SIZE inch = pixelsInAnInch();
    return {MulDiv(himetric.cx, inch.cx, kHimetricInAnInch),
            MulDiv(himetric.cy, inch.cy, kHimetricInAnInch)};
}

}  // namespace kel::ole
