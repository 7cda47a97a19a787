#include "terminal/command_line.h"

#include "com/text.h"

namespace kel::terminal {
namespace {

// As much of a text as is looked for in the history.
constexpr std::size_t kLongestBeginning = 512;

}  // namespace

void CommandLine::attach(HWND comboBox) {
    comboBox_ = comboBox;
    edit_ = nullptr;
    if (!comboBox) return;
    COMBOBOXINFO parts{};
    parts.cbSize = sizeof parts;
    if (GetComboBoxInfo(comboBox, &parts)) edit_ = parts.hwndItem;
    fillList();
}

bool CommandLine::hasSelection() const {
    const DWORD selection = static_cast<DWORD>(SendMessageW(comboBox_, CB_GETEDITSEL, 0, 0));
    return LOWORD(selection) != HIWORD(selection);
}

std::wstring CommandLine::text() const {
    return com::windowText(comboBox_);
}

std::wstring CommandLine::beginning() const {
    return text().substr(0, kLongestBeginning);
}

void CommandLine::show(const std::wstring* command) {
    if (!command) return;
    const auto entry = static_cast<WPARAM>(command - history_.entries().data());
    // The list may be open: the entry is chosen there, too.
    SendMessageW(comboBox_, CB_SETCURSEL, entry, 0);
    setText(*command);
}

void CommandLine::setText(const std::wstring& text) {
    SetWindowTextW(comboBox_, text.c_str());
    SendMessageW(edit_, EM_SETSEL, text.size(), static_cast<LPARAM>(text.size()));
}

void CommandLine::keep(const std::wstring& sent) {
    history_.add(sent);
    if (!comboBox_) return;
    const std::wstring present = text();
    fillList();
    setText(present == sent ? std::wstring() : present);
}

void CommandLine::fillList() {
    SendMessageW(comboBox_, CB_RESETCONTENT, 0, 0);
    for (const std::wstring& command : history_.entries())
        SendMessageW(comboBox_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(command.c_str()));
}

}  // namespace kel::terminal
