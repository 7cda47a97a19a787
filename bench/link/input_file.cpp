#include "bench/link/input_file.h"

#include "com/error.h"
#include "com/handles.h"

namespace kel::bench {
namespace {

// No file is longer; one that is must be something else.
constexpr LONGLONG kMostBytes = 64 * 1024 * 1024;

}  // namespace

std::string readFile(const std::wstring& path, const wchar_t* kind) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        refuseFile(ERROR_FILE_NOT_FOUND, path, kind, L"it is a folder");
    }
    const com::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.get(), &size)) {
        const DWORD error = GetLastError();
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        refuseFile(error, path, kind,
                   missing ? L"there is none" : L"error " + std::to_wstring(error));
    }
    if (size.QuadPart > kMostBytes) {
        refuseFile(ERROR_FILE_TOO_LARGE, path, kind, L"it is too large");
    }

    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD count = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) {
        const DWORD error = GetLastError();
        refuseFile(error, path, kind, L"error " + std::to_wstring(error));
    }
    bytes.resize(count);
    return bytes;
}

void refuseFile(DWORD error, const std::wstring& path, const wchar_t* kind,
                const std::wstring& reason) {
    throw com::Error(HRESULT_FROM_WIN32(error), std::wstring(L"The ") + kind + L" file '" + path +
                                                    L"' cannot be read: " + reason);
}

}  // namespace kel::bench
