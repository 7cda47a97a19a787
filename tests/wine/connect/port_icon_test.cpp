#include "dialogs/connect/port_icon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kel::connect {
namespace {

constexpr int kSize = 32;
// What small signs need at least to be seen, after the usual rules of accessible colours.
constexpr double kLeastContrast = 4.5;

double luminance(COLORREF colour) {
    const auto part = [](BYTE value) {
        const double share = value / 255.0;
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(GetRValue(colour)) + 0.7152 * part(GetGValue(colour)) +
           0.0722 * part(GetBValue(colour));
}

double contrast(COLORREF left, COLORREF right) {
    const auto [dark, light] = std::minmax(luminance(left), luminance(right));
    return (light + 0.05) / (dark + 0.05);
}

std::vector<COLORREF> draw(PortState state) {
    const HDC screen = GetDC(nullptr);
    const HDC device = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, kSize, kSize);
    const HGDIOBJ before = SelectObject(device, bitmap);
    const RECT all{0, 0, kSize, kSize};
    FillRect(device, &all, GetSysColorBrush(COLOR_BTNFACE));
    drawPortIcon(device, 0, 0, kSize, state);
    std::vector<COLORREF> pixels;
    for (int i = 0; i < kSize * kSize; ++i)
        pixels.push_back(GetPixel(device, i % kSize, i / kSize));
    SelectObject(device, before);
    DeleteObject(bitmap);
    DeleteDC(device);
    ReleaseDC(nullptr, screen);
    return pixels;
}

// Where a picture differs from the background the difference is to be seen.
void expectSeen(const std::vector<COLORREF>& pixels, const std::vector<COLORREF>& background) {
    int count = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (pixels[i] == background[i]) continue;
        ++count;
        ASSERT_GE(contrast(pixels[i], GetSysColor(COLOR_BTNFACE)), kLeastContrast) << i;
    }
    EXPECT_GT(count, kSize);
}

TEST(PortIconTest, IsSeenInEverySchemeOfColours) {
    const int elements[] = {COLOR_BTNFACE, COLOR_WINDOW, COLOR_BTNTEXT, COLOR_GRAYTEXT};
    std::vector<COLORREF> present;
    for (const int element : elements)
        present.push_back(GetSysColor(element));
    constexpr COLORREF kWhite = RGB(255, 255, 255);
    constexpr COLORREF kGrey = RGB(109, 109, 109);
    const COLORREF schemes[][4] = {{RGB(240, 240, 240), kWhite, 0, kGrey},
                                   {0, 0, kWhite, RGB(0, 255, 0)},
                                   {kWhite, kWhite, 0, RGB(96, 0, 0)}};
    for (const auto& scheme : schemes) {
        SCOPED_TRACE(scheme[0]);
        ASSERT_TRUE(SetSysColors(4, elements, scheme));
        const std::vector<COLORREF> face(kSize * kSize, GetSysColor(COLOR_BTNFACE));
        const std::vector<COLORREF> free = draw(PortState::Free);
        EXPECT_NE(free, face);
        expectSeen(draw(PortState::Absent), face);
        for (const PortState state : {PortState::Selected, PortState::Busy})
            expectSeen(draw(state), free);
    }
    SetSysColors(4, elements, present.data());
}

}  // namespace
}  // namespace kel::connect
