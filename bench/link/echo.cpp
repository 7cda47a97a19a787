#include "bench/link/echo.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "com/text.h"

namespace kel::bench {
namespace {

constexpr std::chrono::milliseconds kFlushInterval{40};
constexpr UINT kWindowTimeout = 3000;

// How many of the bytes are whole characters.
std::size_t wholeCharacters(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (!IsDBCSLeadByte(static_cast<BYTE>(bytes[i]))) continue;
        if (i + 1 == bytes.size()) return i;
        ++i;
    }
    return bytes.size();
}

// The window's answer; nothing when it is gone or does not answer in time.
std::optional<std::size_t> ask(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0) {
    DWORD_PTR answer = 0;
    if (!SendMessageTimeoutW(window, message, first, second, SMTO_ABORTIFHUNG, kWindowTimeout,
                             &answer)) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(answer);
}

bool replaceSelection(HWND window, std::size_t from, std::size_t to, std::wstring text) {
    if (!ask(window, EM_SETSEL, from, static_cast<LPARAM>(to))) return false;
    auto owner = std::make_unique<std::wstring>(std::move(text));
    const auto characters = reinterpret_cast<LPARAM>(owner->c_str());
    if (ask(window, EM_REPLACESEL, FALSE, characters)) return true;
    // A hanging window may still read the text when it comes to itself.
    owner.release();
    return false;
}

// Makes room by whole lines, a quarter of the limit at a time so that it is rarely done.
bool trim(HWND window, std::size_t& length, std::size_t limit, std::size_t needed) {
    if (length + needed <= limit) return true;
    std::size_t cut = std::min(length, std::max(needed, limit / 4));
    const auto line = ask(window, EM_LINEFROMCHAR, cut);
    const auto next = line ? ask(window, EM_LINEINDEX, *line + 1) : std::nullopt;
    if (next && *next > cut && *next <= length) cut = *next;
    if (!replaceSelection(window, 0, cut, {})) return false;
    length -= cut;
    return true;
}

bool append(HWND window, std::wstring text) {
    const auto limit = ask(window, EM_GETLIMITTEXT);
    const auto length = ask(window, WM_GETTEXTLENGTH);
    if (!limit || !length) return false;

    std::size_t end = *length;
    // Other windows than edit controls know no limit and answer 0.
    if (*limit > 0) {
        if (text.size() > *limit) text.erase(0, text.size() - *limit);
        if (!trim(window, end, *limit, text.size())) return false;
    }
    return replaceSelection(window, end, end, std::move(text));
}

}  // namespace

void Echo::setWindow(HWND window) {
    flush();
    window_ = window;
    windowHangs_ = false;
    incomplete_.clear();
}

void Echo::add(std::string_view bytes) {
    if (!window_) return;
    std::string text = std::move(incomplete_);
    text += bytes;
    const std::size_t whole = wholeCharacters(text);
    incomplete_ = text.substr(whole);
    text.resize(whole);
    add(com::widen(text));
}

void Echo::add(std::wstring_view text) {
    if (!window_) return;
    for (const wchar_t character : text) {
        if (character != L'\0') pending_ += character;
    }
}

void Echo::flushIfDue() {
    if (std::chrono::steady_clock::now() - lastFlush_ >= kFlushInterval) flush();
}

void Echo::flush() {
    if (pending_.empty()) return;
    lastFlush_ = std::chrono::steady_clock::now();
    show(std::exchange(pending_, {}));
}

void Echo::show(std::wstring text) {
    if (windowHangs_) return;
    const HWND window = window_;
    const bool shown = append(window, std::move(text));
    // The call may have set another window.
    if (!shown && window == window_) windowHangs_ = IsWindow(window);
}

}  // namespace kel::bench
