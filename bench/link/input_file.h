#pragma once
// Files that a host names.

#include <windows.h>

#include <string>

namespace kel::bench {

// Both fail with com::Error, whose text names the file; `kind` says what it should be, "script".
std::string readFile(const std::wstring& path, const wchar_t* kind);
[[noreturn]] void refuseFile(DWORD error, const std::wstring& path, const wchar_t* kind,
                             const std::wstring& reason);

}  // namespace kel::bench
