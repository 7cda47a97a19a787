#pragma once
// Which file the user means.

#include <windows.h>

#include <string>

namespace kel::keldesk {

// A path that the user has chosen; empty when he has not. `filter`: pairs of texts that end with a
// null character each, and another one.
std::wstring askForFile(HWND owner, const wchar_t* title, const wchar_t* filter, bool isToSave);

}  // namespace kel::keldesk
