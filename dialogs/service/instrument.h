#pragma once
// The instrument before a service begins.

#include <windows.h>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

// Wakes the instrument; where it does not answer, the user is told in a message box over the owner,
// which may be null. Throws com::Error when the link fails.
bool wakeInstrument(const com::ComPtr<IKelCommunicator>& link, HWND owner);

// Tells the user of a failure in a message box over the owner.
void tellError(HWND owner, const wchar_t* text);

}  // namespace kel::service
