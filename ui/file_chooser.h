#pragma once
// The system's dialog for choosing a file.

#include <windows.h>

#include <optional>
#include <string>

namespace kel::ui {

// An existing file; nothing when the user cancels. `filter` holds pairs of description and pattern,
// each part ended by a NUL. The file `first` is offered at first, where its name is a possible one.
// The current folder stays as it is. Throws com::Error when there can be no dialog.
std::optional<std::wstring> chooseFile(HWND owner, const std::wstring& filter,
                                       const wchar_t* defaultExtension,
                                       const std::wstring& first = {});

}  // namespace kel::ui
