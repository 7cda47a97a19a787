#pragma once
// The library's connection dialogs, as the desk shows them.

#include <windows.h>

#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

// The name under which the dialogs remember the desk's choices, as UTF-8.
inline constexpr char kApplicationName[] = "keldesk";

struct Session {
    bool isBegun = false;
    std::wstring file;  // that was opened; empty for a connection
};

// All return when the user has closed the dialog. Throw host::Failure (not registered), com::Error.
Session beginSession(HWND owner, const com::ComPtr<IKelCommunicator>& link);
bool connectSerial(HWND owner, const com::ComPtr<IKelCommunicator>& link);
bool connectNetwork(HWND owner, const com::ComPtr<IKelCommunicator>& link);

}  // namespace kel::keldesk
