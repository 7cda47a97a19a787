#pragma once
// The look of the terminal, as the user chooses and keeps it.

#include <windows.h>

#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

// A colour of the terminal: the members that give and take it.
struct TerminalColour {
    HRESULT (STDMETHODCALLTYPE IKelTerminal::*get)(OLE_COLOR*);
    HRESULT (STDMETHODCALLTYPE IKelTerminal::*put)(OLE_COLOR);
};

// Ask the user; nothing changes when he cancels. Throw com::Error.
void chooseColour(HWND owner, const com::ComPtr<IKelTerminal3>& terminal, TerminalColour colour);
void chooseFont(HWND owner, const com::ComPtr<IKelTerminal3>& terminal);

// What the control saves of itself, and back. Throw com::Error.
std::string savedLook(const com::ComPtr<IKelTerminal3>& terminal);
void restoreLook(const com::ComPtr<IKelTerminal3>& terminal, const std::string& saved);

}  // namespace kel::keldesk
