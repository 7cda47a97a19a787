#pragma once
// The terminal control in a window, by the control-hosting services of the platform.

#include <windows.h>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

class TerminalHost {
public:
    // Throws com::Error, host::Failure (not registered).
    explicit TerminalHost(HWND parent);
    // The control lets go of its link.
    ~TerminalHost();
    TerminalHost(const TerminalHost&) = delete;
    TerminalHost& operator=(const TerminalHost&) = delete;

    const com::ComPtr<IKelTerminal3>& terminal() const { return terminal_; }
    void setPlace(const RECT& place);
    void takeFocus();

private:
    HWND window_;
    com::ComPtr<IKelTerminal3> terminal_;
};

}  // namespace kel::keldesk
