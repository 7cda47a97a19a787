#include "hosts/keldesk/scaled.h"

#include <windows.h>

namespace kel::keldesk {

int scaled(int pixels) {
    const HDC screen = GetDC(nullptr);
    const int resolution = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return MulDiv(pixels, resolution, 96);
}

}  // namespace kel::keldesk
