#include "bench/link/script_file.h"

#include <windows.h>

#include <stdexcept>

#include "com/error.h"
#include "com/handles.h"
#include "com/text.h"
#include "com/text_file.h"

namespace kel::bench {
namespace {

// No script is longer; a file that is must be something else.
constexpr LONGLONG kMostBytes = 64 * 1024 * 1024;

[[noreturn]] void refuse(DWORD error, const std::wstring& path, const std::wstring& reason) {
    throw com::Error(HRESULT_FROM_WIN32(error),
                     L"The script file '" + path + L"' cannot be read: " + reason);
}

std::string readFile(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        refuse(ERROR_FILE_NOT_FOUND, path, L"it is a folder");
    }
    const com::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.get(), &size)) {
        const DWORD error = GetLastError();
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        refuse(error, path, missing ? L"there is none" : L"error " + std::to_wstring(error));
    }
    if (size.QuadPart > kMostBytes) refuse(ERROR_FILE_TOO_LARGE, path, L"it is too large");

    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD count = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) {
        const DWORD error = GetLastError();
        refuse(error, path, L"error " + std::to_wstring(error));
    }
    bytes.resize(count);
    return bytes;
}

}  // namespace

std::wstring readScriptFile(const std::wstring& path) {
    const std::string bytes = readFile(path);
    try {
        return com::decodeTextFile(bytes);
    } catch (const std::invalid_argument& reason) {
        refuse(ERROR_INVALID_DATA, path, L"it " + com::widen(reason.what()));
    }
}

}  // namespace kel::bench
