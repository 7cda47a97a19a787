#pragma once
// Paths that stay what they are when the current folder changes.

#include <windows.h>

#include <string>

namespace kel::host {

// The path as it is where the system cannot complete it.
inline std::wstring fullPath(const std::wstring& path) {
    std::wstring full(0x8000, L'\0');
    const DWORD size =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    return size == 0 || size >= full.size() ? path : full.substr(0, size);
}

}  // namespace kel::host
