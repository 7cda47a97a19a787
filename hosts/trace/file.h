#pragma once
// Files of the platform.

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>

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
    struct Close {
        void operator()(void* handle) const { CloseHandle(handle); }
    };

    File(HANDLE handle, const std::wstring& path);

    std::unique_ptr<void, Close> handle_;
};

}  // namespace kel::trace
