#pragma once
// The dialog that asks where the instrument is.

#include <windows.h>

#include <optional>

#include "hosts/shared/model/target.h"

namespace kel::keldesk {

// Begins with a target; nothing when the user cancels.
std::optional<host::Target> askForTarget(HWND owner, const host::Target& before);

}  // namespace kel::keldesk
