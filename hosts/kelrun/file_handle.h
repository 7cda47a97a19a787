#pragma once
// Owns a handle of a file.

#include <windows.h>

#include <memory>

namespace kel::kelrun {

struct CloseFile {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using FileHandle = std::unique_ptr<HANDLE, CloseFile>;

}  // namespace kel::kelrun
