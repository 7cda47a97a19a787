#include "hosts/trace/file.h"

#include <limits>

#include "com/error.h"

namespace kel::trace {

File::File(HANDLE handle, const std::wstring& path) {
    if (handle == INVALID_HANDLE_VALUE) {
        throw com::Error(com::lastError().code(), L"The file '" + path + L"' cannot be opened");
    }
    handle_ = com::FileHandle(handle);
}

File File::create(const std::wstring& path) {
    return {CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                        FILE_ATTRIBUTE_NORMAL, nullptr),
            path};
}

File File::open(const std::wstring& path) {
    return {CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr),
            path};
}

void File::write(std::string_view bytes) {
    DWORD written = 0;
    if (!WriteFile(handle_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                   nullptr)) {
        throw com::lastError();
    }
    if (written != bytes.size()) throw com::Error(HRESULT_FROM_WIN32(ERROR_DISK_FULL));
}

std::string File::readAll() {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(handle_.get(), &size)) throw com::lastError();
    if (size.QuadPart > std::numeric_limits<LONG>::max()) {
        throw com::Error(HRESULT_FROM_WIN32(ERROR_FILE_TOO_LARGE));
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!ReadFile(handle_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr)) {
        throw com::lastError();
    }
    bytes.resize(read);
    return bytes;
}

}  // namespace kel::trace
