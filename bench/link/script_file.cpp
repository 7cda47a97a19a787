#include "bench/link/script_file.h"

#include <windows.h>

#include <string_view>

#include "bench/link/handle.h"
#include "com/error.h"
#include "com/text.h"

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
    const Handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
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

// `high` and `low` are the places of the two bytes of a unit.
std::wstring fromUtf16(std::string_view bytes, std::size_t high, std::size_t low) {
    std::wstring text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<wchar_t>(static_cast<BYTE>(bytes[i + high]) << 8 |
                                     static_cast<BYTE>(bytes[i + low]));
    }
    return text;
}

}  // namespace

std::wstring readScriptFile(const std::wstring& path) {
    const std::string file = readFile(path);
    const std::string_view bytes = file;
    if (bytes.starts_with("\xEF\xBB\xBF")) return com::widen(bytes.substr(3), CP_UTF8);
    if (bytes.starts_with("\xFF\xFE")) return fromUtf16(bytes.substr(2), 1, 0);
    if (bytes.starts_with("\xFE\xFF")) return fromUtf16(bytes.substr(2), 0, 1);
    return com::widen(bytes);
}

}  // namespace kel::bench
