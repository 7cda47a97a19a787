#include "tests/wine/support/picture.h"

#include <objidl.h>

#include <algorithm>
#include <stdexcept>

namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus

#include <gdiplus.h>

namespace kel::test {
namespace {

constexpr CLSID kPngEncoder = {
    0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

class Encoder {
public:
    Encoder() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token_, &input, nullptr);
    }
    ~Encoder() { Gdiplus::GdiplusShutdown(token_); }

private:
    ULONG_PTR token_ = 0;
};

BOOL CALLBACK noteUnpainted(HWND window, LPARAM flag) {
    if (GetUpdateRect(window, nullptr, FALSE)) *reinterpret_cast<bool*>(flag) = true;
    return TRUE;
}

// The window's thread paints when it has nothing else to do.
void waitUntilPainted(HWND window) {
    for (int round = 0; round < 1000; ++round) {
        bool isUnpainted = GetUpdateRect(window, nullptr, FALSE) != FALSE;
        EnumChildWindows(window, noteUnpainted, reinterpret_cast<LPARAM>(&isUnpainted));
        if (!isUnpainted) break;
        Sleep(2);
    }
    // The last of them may still be at it.
    SendMessageW(window, WM_NULL, 0, 0);
}

HBITMAP copyOf(HWND window) {
    // As it looks while it is in use, whatever is in front at the moment.
    SendMessageW(window, WM_NCACTIVATE, TRUE, 0);
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    waitUntilPainted(window);
    RECT place{};
    GetWindowRect(window, &place);
    const int width = place.right - place.left;
    const int height = place.bottom - place.top;
    const HDC source = GetWindowDC(window);
    const HDC target = CreateCompatibleDC(source);
    const HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
    const HGDIOBJ before = SelectObject(target, bitmap);
    BitBlt(target, 0, 0, width, height, source, 0, 0, SRCCOPY);
    SelectObject(target, before);
    DeleteDC(target);
    ReleaseDC(window, source);
    return bitmap;
}

}  // namespace

void savePicture(HWND window, const std::wstring& path) {
    const Encoder encoder;
    const HBITMAP bitmap = copyOf(window);
    Gdiplus::Status status;
    {
        Gdiplus::Bitmap image(bitmap, nullptr);
        status = image.Save(path.c_str(), &kPngEncoder, nullptr);
    }
    DeleteObject(bitmap);
    if (status != Gdiplus::Ok) throw std::runtime_error("the picture cannot be saved");
}

}  // namespace kel::test
