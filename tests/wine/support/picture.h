#pragma once
// Pictures of windows.

#include <windows.h>

#include <string>

namespace kel::test {

// Saves what a window of this process shows, frame included, as a PNG file. Throws when it cannot.
void savePicture(HWND window, const std::wstring& path);

}  // namespace kel::test
