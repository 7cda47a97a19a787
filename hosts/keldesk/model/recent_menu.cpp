#include "hosts/keldesk/model/recent_menu.h"

namespace kel::keldesk {
namespace {

constexpr std::size_t kLongestShown = 60;

}  // namespace

std::wstring menuText(std::size_t index, const std::wstring& path) {
    std::wstring shown = path;
    if (shown.size() > kLongestShown) {
        // The name says more than the folders on the way to it.
        shown = shown.substr(0, 3) + L"\u2026" + shown.substr(shown.size() - (kLongestShown - 4));
    }
    std::wstring text = index < 9 ? L"&" + std::to_wstring(index + 1) : L"1&0";
    text += L' ';
    for (const wchar_t character : shown) {
        text += character;
        if (character == L'&') text += L'&';
    }
    return text;
}

}  // namespace kel::keldesk
