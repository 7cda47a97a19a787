#include "hosts/keldesk/model/recent_scripts.h"

#include <algorithm>
#include <cwctype>

namespace kel::keldesk {
namespace {

constexpr std::size_t kLongestShown = 60;

bool isSamePath(const std::wstring& left, const std::wstring& right) {
    return std::ranges::equal(
        left, right, {}, [](wchar_t c) { return std::towlower(static_cast<std::wint_t>(c)); },
        [](wchar_t c) { return std::towlower(static_cast<std::wint_t>(c)); });
}

}  // namespace

RecentScripts::RecentScripts(const std::vector<std::wstring>& kept) {
    for (auto path = kept.rbegin(); path != kept.rend(); ++path)
        add(*path);
}

void RecentScripts::add(const std::wstring& path) {
    if (path.empty()) return;
    remove(path);
    paths_.insert(paths_.begin(), path);
    if (paths_.size() > kMost) paths_.pop_back();
}

void RecentScripts::remove(const std::wstring& path) {
    std::erase_if(paths_, [&](const std::wstring& known) { return isSamePath(known, path); });
}

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
