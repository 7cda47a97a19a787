#pragma once
// The command line: a combo box whose list is the history of what was sent.

#include <windows.h>

#include <string>

#include "terminal/model/command_history.h"

namespace kel::terminal {

// Outlives its control; the history stays.
class CommandLine {
public:
    // Null when the control is gone.
    void attach(HWND comboBox);

    HWND window() const { return comboBox_; }
    // The part of it in which the user types.
    HWND edit() const { return edit_; }
    bool hasFocus() const { return edit_ && GetFocus() == edit_; }
    bool hasSelection() const;

    // Empty while there is no control.
    std::wstring text() const;

    // Puts the next older or newer command in place of what stands there, the caret behind it.
    void showOlder() { show(history_.older(beginning())); }
    void showNewer() { show(history_.newer(beginning())); }

    // Keeps a command in the history. The line is emptied unless its text has changed meanwhile.
    void keep(const std::wstring& sent);

private:
    std::wstring beginning() const;
    void show(const std::wstring* command);
    void setText(const std::wstring& text);
    void fillList();

    HWND comboBox_ = nullptr;
    HWND edit_ = nullptr;
    CommandHistory history_;
};

}  // namespace kel::terminal
