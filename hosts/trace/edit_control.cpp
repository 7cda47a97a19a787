#include "hosts/trace/edit_control.h"

#include <algorithm>

namespace kel::trace {
namespace {

constexpr UINT kPatience = 3000;

LRESULT ask(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0) {
    LRESULT answer = 0;
    sendTo(window, message, first, second, answer);
    return answer;
}

void replace(HWND window, LRESULT from, LRESULT to, const wchar_t* text) {
    ask(window, EM_SETSEL, static_cast<WPARAM>(from), to);
    ask(window, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text));
}

}  // namespace

bool sendTo(HWND window, UINT message, WPARAM first, LPARAM second, LRESULT& answer) {
    DWORD_PTR taken = 0;
    if (!SendMessageTimeoutW(window, message, first, second, SMTO_ABORTIFHUNG, kPatience, &taken)) {
        return false;
    }
    answer = static_cast<LRESULT>(taken);
    return true;
}

void appendText(HWND window, const std::wstring& text) {
    if (!IsWindow(window)) return;
    const LRESULT limit = ask(window, EM_GETLIMITTEXT);
    LRESULT length = ask(window, WM_GETTEXTLENGTH);
    const auto needed = static_cast<LRESULT>(text.size());
    if (limit > 0 && length + needed > limit) {
        const LRESULT cut = std::min(length, std::max(needed, limit / 4));
        replace(window, 0, cut, L"");
        length -= cut;
    }
    replace(window, length, length, text.c_str());
}

}  // namespace kel::trace
