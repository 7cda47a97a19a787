#include "hosts/trace/file.h"

#include <cstdio>
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
    return read(static_cast<std::size_t>(size.QuadPart));
}

std::string File::read(std::size_t count) {
    std::string bytes(count, '\0');
    DWORD read = 0;
    if (!ReadFile(handle_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr)) {
        throw com::lastError();
    }
    bytes.resize(read);
    return bytes;
}

void Fingerprint::add(std::string_view bytes) {
    for (const char byte : bytes)
        hash_ = (hash_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
}

std::string Fingerprint::text() const {
    char text[17];
    std::snprintf(text, sizeof text, "%08lx%08lx", static_cast<unsigned long>(hash_ >> 32),
                  static_cast<unsigned long>(hash_ & 0xFFFFFFFFu));
    return text;
}

}  // namespace kel::trace
