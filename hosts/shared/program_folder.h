#pragma once
// Where this program is.

#include <windows.h>

#include <string>

namespace kel::host {

// The folder of the running program, with its backslash at the end.
inline std::wstring programFolder() {
    std::wstring path(0x8000, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1);
}

}  // namespace kel::host
