#pragma once
// Program and library files.

#include <windows.h>

#include <string>

#include "hosts/shared/model/registration.h"

namespace kel::host {

// Looks at a file without loading it.
ImageFile readImageFile(const std::wstring& path);

}  // namespace kel::host
