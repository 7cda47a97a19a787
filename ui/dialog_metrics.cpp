#include "ui/dialog_metrics.h"

#include <string>

#include "com/error.h"
#include "com/module.h"
#include "ui/dialog_template.h"

namespace kel::ui {
namespace {

constexpr int kPointsInAnInch = 72;

// The width of a dialog unit comes from these, by definition.
constexpr std::wstring_view kLetters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// The beginning of an extended description, which no header declares.
#pragma pack(push, 2)
struct ExtendedTemplate {
    WORD version;
    WORD signature;
    DWORD helpIdentifier;
    DWORD extendedStyle;
    DWORD style;
    WORD controls;
    short left;
    short top;
    short width;
    short height;
};
#pragma pack(pop)

int pixelsOf(HDC device, std::wstring_view text) {
    SIZE size{};
    GetTextExtentPoint32W(device, text.data(), static_cast<int>(text.size()), &size);
    return static_cast<int>(size.cx);
}

}  // namespace

DialogMetrics::DialogMetrics() : device_(CreateCompatibleDC(nullptr)) {
    if (!device_) throw com::lastError();
    LOGFONTW description{};
    description.lfHeight = -MulDiv(DialogTemplate::kFontPoints,
                                   GetDeviceCaps(device_.get(), LOGPIXELSY), kPointsInAnInch);
    description.lfWeight = FW_NORMAL;
    description.lfCharSet = DEFAULT_CHARSET;
    std::wstring_view(DialogTemplate::kFontName).copy(description.lfFaceName, LF_FACESIZE - 1);
    font_.reset(CreateFontIndirectW(&description));
    if (!font_) throw com::lastError();
    SelectObject(device_.get(), font_.get());

    TEXTMETRICW metrics{};
    GetTextMetricsW(device_.get(), &metrics);
    baseHeight_ = static_cast<int>(metrics.tmHeight);
    baseWidth_ = (pixelsOf(device_.get(), kLetters) / 26 + 1) / 2;
    if (baseWidth_ <= 0 || baseHeight_ <= 0) throw com::lastError();
}

int DialogMetrics::textWidth(std::wstring_view text) const {
    return unitsAcross(pixelsOf(device_.get(), text));
}

UnitSize DialogMetrics::largestClient(HWND over) const {
    MONITORINFO information{};
    information.cbSize = sizeof information;
    if (!GetMonitorInfoW(MonitorFromWindow(over, MONITOR_DEFAULTTOPRIMARY), &information))
        throw com::lastError();
    const RECT& area = information.rcWork;
    const int width =
        static_cast<int>(area.right - area.left) - 2 * GetSystemMetrics(SM_CXFIXEDFRAME);
    const int height = static_cast<int>(area.bottom - area.top) -
                       2 * GetSystemMetrics(SM_CYFIXEDFRAME) - GetSystemMetrics(SM_CYCAPTION);
    return {width * 4 / baseWidth_, height * 8 / baseHeight_};
}

SIZE DialogMetrics::pixels(UnitSize units) const {
    return {MulDiv(units.width, baseWidth_, 4), MulDiv(units.height, baseHeight_, 8)};
}

UnitSize clientOf(WORD resource) {
    const HMODULE module = com::moduleInstance();
    const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(resource), RT_DIALOG);
    const HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
    if (!loaded) throw com::lastError();

    const auto* description = static_cast<const ExtendedTemplate*>(LockResource(loaded));
    return {description->width, description->height};
}

}  // namespace kel::ui
