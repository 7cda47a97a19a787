#include "controls/selector_dialog.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>

#include "controls/model/check_rule.h"
#include "resources/resource_ids.h"
#include "ui/redraw_pause.h"

namespace kel::controls {
namespace {

constexpr int kCaptionMargin = 16;
// What the list leaves free before and behind the text of a row.
constexpr int kLabelMargin = 16;

// What a control draws on, in its font.
class ControlDevice {
public:
    explicit ControlDevice(HWND control)
        : control_(control),
          device_(GetDC(control)),
          before_(SelectObject(device_,
                               reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)))) {}
    ~ControlDevice() {
        SelectObject(device_, before_);
        ReleaseDC(control_, device_);
    }
    ControlDevice(const ControlDevice&) = delete;
    ControlDevice& operator=(const ControlDevice&) = delete;

    HDC get() const { return device_; }

private:
    HWND control_;
    HDC device_;
    HGDIOBJ before_;
};

}  // namespace

std::optional<std::vector<bool>> SelectorDialog::ask(HWND owner) {
    if (runModal(IDD_SELECTOR, owner) != IDOK) return std::nullopt;
    return std::move(answers_);
}

void SelectorDialog::initialise() {
    list_ = control(IDC_SELECTOR_LIST);
    showTexts();
    makeRoom();
    fill();
    intercept(list_);
}

HWND SelectorDialog::initialFocus() {
    return list_;
}

void SelectorDialog::showTexts() {
    SetWindowTextW(window(), texts_.title.c_str());
    setText(IDC_SELECTOR_PROMPT, texts_.prompt);
    setText(IDOK, texts_.ok);
    setText(IDCANCEL, texts_.cancel);
    show(IDOK, !texts_.ok.empty());
    show(IDCANCEL, !texts_.cancel.empty());
}

void SelectorDialog::makeRoom() {
    const SelectorLayout designed{place(), placeOf(IDC_SELECTOR_PROMPT), placeOf(IDC_SELECTOR_LIST),
                                  placeOf(IDOK), placeOf(IDCANCEL)};
    const SIZE prompt = measure(IDC_SELECTOR_PROMPT, designed.prompt.width(), DT_WORDBREAK);
    const SelectorLayout layout =
        layOut(designed, {static_cast<int>(prompt.cy), buttonWidth(IDOK), buttonWidth(IDCANCEL)});
    setPlaceOf(IDC_SELECTOR_PROMPT, layout.prompt);
    setPlaceOf(IDC_SELECTOR_LIST, layout.list);
    setPlaceOf(IDOK, layout.ok);
    setPlaceOf(IDCANCEL, layout.cancel);
    if (layout.window == designed.window) return;
    resize(layout.window.width(), layout.window.height());
    ui::centreWindow(window(), GetWindow(window(), GW_OWNER));
}

int SelectorDialog::buttonWidth(int identifier) const {
    return static_cast<int>(measure(identifier, 0, DT_SINGLELINE).cx) + kCaptionMargin;
}

SIZE SelectorDialog::measure(int identifier, int width, UINT format) const {
    const ControlDevice device(control(identifier));
    RECT needed{0, 0, width, 0};
    DrawTextW(device.get(), text(identifier).c_str(), -1, &needed, format | DT_CALCRECT);
    return {needed.right, needed.bottom};
}

void SelectorDialog::fill() {
    const ui::RedrawPause pause(list_);
    SetWindowLongPtrW(list_, GWL_EXSTYLE,
                      GetWindowLongPtrW(list_, GWL_EXSTYLE) | WS_EX_NOPARENTNOTIFY);
    constexpr DWORD kListStyle = LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT;
    SendMessageW(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, kListStyle, kListStyle);
    LVCOLUMNW column{};
    SendMessageW(list_, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    SendMessageW(list_, LVM_SETITEMCOUNT, options_.size(), 0);
    for (std::size_t i = 0; i < options_.size(); ++i) {
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = static_cast<int>(i);
        item.pszText = options_[i].name.data();
        if (SendMessageW(list_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)) < 0)
            throw com::Error(E_OUTOFMEMORY);
        // A new row is not checked.
        if (options_[i].isChecked) setCheck(item.iItem, true);
    }
    fitColumn();
    // Where there is no row, no key would do anything; it need not be selected as well.
    setState(0, LVIS_FOCUSED, LVIS_FOCUSED);
}

// The list can do that by itself, in three times the time.
void SelectorDialog::fitColumn() {
    RECT label{LVIR_LABEL, 0, 0, 0};
    if (!SendMessageW(list_, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&label))) return;
    const ControlDevice device(list_);
    LONG widest = 0;
    for (const Option& option : options_) {
        SIZE size{};
        GetTextExtentPoint32W(device.get(), option.name.c_str(),
                              static_cast<int>(option.name.size()), &size);
        widest = std::max(widest, size.cx);
    }
    SendMessageW(list_, LVM_SETCOLUMNWIDTH, 0, label.left + widest + kLabelMargin);
}

bool SelectorDialog::command(int control, int notification) {
    if (control == IDOK) {
        // Enter arrives here too.
        if (texts_.ok.empty()) return true;
        answers_.clear();
        for (std::size_t i = 0; i < options_.size(); ++i)
            answers_.push_back(isChecked(static_cast<int>(i)));
    }
    return Dialog::command(control, notification);
}

std::optional<LRESULT> SelectorDialog::intercepted(HWND, UINT message, WPARAM wide, LPARAM longer) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK: {
            const int row = rowOfCheckBox(longer);
            if (row < 0) return std::nullopt;
            SetFocus(list_);
            work(row, (wide & MK_CONTROL) != 0);
            return 0;
        }
        case WM_KEYDOWN: {
            if (wide != VK_SPACE) return std::nullopt;
            const auto row = static_cast<int>(
                SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
            if (row >= 0) work(row, GetKeyState(VK_CONTROL) < 0);
            return 0;
        }
        case WM_CHAR:
            // The list would look for a row whose name begins with it.
            if (wide == L' ') return 0;
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

int SelectorDialog::rowOfCheckBox(LPARAM position) const {
    LVHITTESTINFO hit{};
    hit.pt = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    SendMessageW(list_, LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return hit.flags == LVHT_ONITEMSTATEICON ? hit.iItem : -1;
}

UINT SelectorDialog::state(int row, UINT mask) const {
    return static_cast<UINT>(SendMessageW(list_, LVM_GETITEMSTATE, static_cast<WPARAM>(row), mask));
}

void SelectorDialog::setState(int row, UINT state, UINT mask) {
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                 reinterpret_cast<LPARAM>(&item));
}

void SelectorDialog::setCheck(int row, bool isChecked) {
    setState(row, INDEXTOSTATEIMAGEMASK(isChecked ? 2 : 1), LVIS_STATEIMAGEMASK);
}

bool SelectorDialog::isChecked(int row) const {
    return state(row, LVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

std::vector<int> SelectorDialog::selectedRows() const {
    std::vector<int> rows;
    const auto next = [this](int row) {
        return static_cast<int>(
            SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
    };
    for (int row = next(-1); row >= 0; row = next(row))
        rows.push_back(row);
    return rows;
}

// A click on a row's check box, or the space bar.
void SelectorDialog::work(int row, bool isControlHeld) {
    setState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    if (isControlHeld) {
        toggleSelection(row);
    } else {
        toggleCheck(row);
    }
}

void SelectorDialog::toggleCheck(int row) {
    const std::vector<int> rows = rowsToCheck(row, selectedRows());
    const bool checks = !isChecked(row);
    std::optional<ui::RedrawPause> pause;
    if (rows.size() > 1) pause.emplace(list_);
    for (const int each : rows)
        setCheck(each, checks);
}

void SelectorDialog::toggleSelection(int row) {
    setState(row, ~state(row, LVIS_SELECTED), LVIS_SELECTED);
}

}  // namespace kel::controls
