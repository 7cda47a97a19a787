#pragma once
// Files of the platform.

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "com/handles.h"

namespace kel::trace {

class File {
public:
    File() = default;
    // Both throw com::Error, with the path in its text.
    static File create(const std::wstring& path);
    static File open(const std::wstring& path);

    // Both throw com::Error.
    void write(std::string_view bytes);
    std::string readAll();
    // At most so many of the next bytes; none at the end.
    std::string read(std::size_t count);

private:
    File(HANDLE handle, const std::wstring& path);

    com::FileHandle handle_;
};

// Tells contents apart.
class Fingerprint {
public:
    void add(std::string_view bytes);
    std::string text() const;

private:
    std::uint64_t hash_ = 0xCBF29CE484222325u;  // FNV-1a
};

}  // namespace kel::trace
