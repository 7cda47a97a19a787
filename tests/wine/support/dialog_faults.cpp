#include "tests/wine/support/dialog_faults.h"

#include <algorithm>
#include <map>

#include "com/text.h"
#include "tests/wine/support/dialog_driver.h"

namespace kel::test {
namespace {

constexpr int kButtonMargin = 6;
constexpr int kCheckBoxMark = 17;
constexpr int kRowTolerance = 8;

struct Control {
    HWND window;
    std::wstring className;
    std::wstring text;
    DWORD style;
    RECT place;
    bool isVisible;

    bool is(const wchar_t* name) const { return _wcsicmp(className.c_str(), name) == 0; }
    DWORD buttonKind() const { return is(L"Button") ? style & BS_TYPEMASK : ~0u; }
    bool isFrame() const { return buttonKind() == BS_GROUPBOX; }
    bool isField() const {
        return is(L"Edit") || is(L"ComboBox") || is(L"SysListView32") || is(L"SysTreeView32");
    }
    bool isPicture() const {
        const DWORD kind = style & SS_TYPEMASK;
        return is(L"Static") && (kind == SS_ICON || kind == SS_BITMAP || kind == SS_OWNERDRAW ||
                                 kind == SS_ENHMETAFILE);
    }
    // A label stands in the place of a text of its own; the text of a field is its value.
    bool isNamed(const Control* before) const {
        if (!isField() && !text.empty()) return true;
        return before && before->is(L"Static") && !before->isPicture() && !before->text.empty();
    }
    bool needsName() const {
        return isField() || isPicture() || is(L"Button") || is(L"msctls_progress32");
    }
    bool isUsed() const {
        if (is(L"Button")) return !isFrame();
        return isField() && !(is(L"Edit") && (style & ES_READONLY));
    }
    std::string name() const {
        return com::narrow(className) + " " + std::to_string(GetDlgCtrlID(window)) + " '" +
               com::narrow(text) + "'";
    }
};

std::vector<Control> controlsOf(HWND dialog) {
    std::vector<Control> controls;
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        Control control{};
        control.window = child;
        control.className = classOf(child);
        control.text = com::windowText(child);
        control.style = static_cast<DWORD>(GetWindowLongW(child, GWL_STYLE));
        control.isVisible = (control.style & WS_VISIBLE) != 0;
        GetWindowRect(child, &control.place);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.place), 2);
        controls.push_back(control);
    }
    return controls;
}

bool textFits(const Control& control) {
    int width = static_cast<int>(control.place.right - control.place.left);
    const int height = static_cast<int>(control.place.bottom - control.place.top);
    UINT format = DT_CALCRECT;
    if (control.is(L"Static")) {
        const DWORD kind = control.style & SS_TYPEMASK;
        if (kind > SS_RIGHT && kind != SS_LEFTNOWORDWRAP) return true;
        // A line that has no room for a second one cannot be broken.
        if (kind != SS_LEFTNOWORDWRAP && (control.style & SS_CENTERIMAGE) == 0)
            format |= DT_WORDBREAK;
    } else if (control.is(L"Button")) {
        const DWORD kind = control.buttonKind();
        // Its owner draws something else; the text is for those who have it read to them.
        if (kind == BS_OWNERDRAW) return true;
        width -= kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON ? kButtonMargin : kCheckBoxMark;
    } else {
        return true;
    }
    const HDC device = GetDC(control.window);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control.window, WM_GETFONT, 0, 0));
    const HGDIOBJ before = SelectObject(device, font);
    RECT needed{0, 0, width, 0};
    DrawTextW(device, control.text.c_str(), -1, &needed, format);
    SelectObject(device, before);
    ReleaseDC(control.window, device);
    return needed.right <= width && (control.isFrame() || needed.bottom <= height);
}

wchar_t mnemonicOf(const std::wstring& text) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != L'&') continue;
        if (text[++i] != L'&') return static_cast<wchar_t>(towlower(text[i]));
    }
    return L'\0';
}

// Captions that users know, keys included: there the key goes from one to the other.
bool shareMnemonic(const Control& left, const Control& right) {
    return left.text == L"&Baud rate" && right.text == L"&Browse...";
}

// The row comes first, then the column.
bool isReadBefore(const Control& left, const Control& right) {
    if (std::abs(left.place.top - right.place.top) > kRowTolerance)
        return left.place.top < right.place.top;
    return left.place.left < right.place.left;
}

// The arrow keys go on from a stop to the rest of its group.
bool isReached(const std::vector<Control>& controls, const Control& control) {
    const auto begins = [](const Control& one) { return (one.style & WS_GROUP) != 0; };
    const auto place = controls.begin() + (&control - controls.data());
    const auto before =
        std::find_if(std::make_reverse_iterator(place + 1), controls.rend(), begins);
    const auto begin = before == controls.rend() ? controls.begin() : before.base() - 1;
    return std::any_of(begin, std::find_if(place + 1, controls.end(), begins),
                       [](const Control& one) { return (one.style & WS_TABSTOP) != 0; });
}

}  // namespace

std::vector<std::string> faultsOf(HWND dialog) {
    std::vector<std::string> faults;
    const std::vector<Control> controls = controlsOf(dialog);
    RECT client{};
    GetClientRect(dialog, &client);
    std::map<wchar_t, const Control*> mnemonics;
    const Control* lastStop = nullptr;
    const Control* previous = nullptr;
    for (const Control& control : controls) {
        RECT common{};
        IntersectRect(&common, &control.place, &client);
        if (control.isVisible && !EqualRect(&common, &control.place))
            faults.push_back(control.name() + " sticks out");
        if (!textFits(control)) faults.push_back(control.name() + " is clipped");
        for (const Control& other : controls) {
            if (&other <= &control || !control.isVisible || !other.isVisible) continue;
            if (control.isFrame() || other.isFrame()) continue;
            if (IntersectRect(&common, &control.place, &other.place))
                faults.push_back(control.name() + " overlaps " + other.name());
        }
        const bool isText =
            control.is(L"Button") || (control.is(L"Static") && (control.style & SS_NOPREFIX) == 0);
        if (const wchar_t mnemonic = isText ? mnemonicOf(control.text) : L'\0') {
            const auto [known, isNew] = mnemonics.emplace(mnemonic, &control);
            if (!isNew && !shareMnemonic(*known->second, control))
                faults.push_back(control.name() + " has the mnemonic of " + known->second->name());
        }
        if (control.needsName() && !control.isNamed(previous))
            faults.push_back(control.name() + " has no label");
        if (control.isUsed() && control.isVisible && !isReached(controls, control))
            faults.push_back(control.name() + " cannot be reached with the keys");
        if (control.style & WS_TABSTOP) {
            if (lastStop && !isReadBefore(*lastStop, control))
                faults.push_back(control.name() + " is reached after " + lastStop->name());
            lastStop = &control;
        }
        previous = &control;
    }
    return faults;
}

}  // namespace kel::test
