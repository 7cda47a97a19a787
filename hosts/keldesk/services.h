#pragma once
// The library's dialogs that service an instrument, as the desk shows them.

#include <windows.h>

#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

// All return when the user has closed the dialog, true where it did what it is for. Throw
// host::Failure (not registered), com::Error.
bool updateFirmware(HWND owner, const com::ComPtr<IKelCommunicator>& link);
bool setPressureOffset(HWND owner, const com::ComPtr<IKelCommunicator>& link);
bool showRecorder(HWND owner, const com::ComPtr<IKelCommunicator>& link);
// `report` is the path of the report; empty for none.
bool calibrateCompass(HWND owner, const com::ComPtr<IKelCommunicator>& link,
                      const std::wstring& report);

}  // namespace kel::keldesk
