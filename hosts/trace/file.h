#pragma once
// Files of the platform.

#include <windows.h>

#include <string>
#include <string_view>

#include "com/handles.h"

namespace kel::trace {

class File {
public:
    // Both throw com::Error, with the path in its text.
    static File create(const std::wstring& path);
    static File open(const std::wstring& path);

    // Both throw com::Error.
    void write(std::string_view bytes);
    std::string readAll();

private:
    File(HANDLE handle, const std::wstring& path);

    com::FileHandle handle_;
};

}  // namespace kel::trace
