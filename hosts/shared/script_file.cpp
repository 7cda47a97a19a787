#include "hosts/shared/script_file.h"

#include <windows.h>

#include <filesystem>
#include <stdexcept>

#include "com/handles.h"
#include "com/text.h"
#include "com/text_file.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/full_path.h"
#include "hosts/shared/model/failure.h"

namespace kel::host {
namespace {

// Far above any script; text, lines and records of one must fit into a 32-bit process together.
constexpr DWORD kLargestFile = 64 * 1024 * 1024;

class Reader {
public:
    Reader(const std::string& shownPath, const std::wstring& path)
        : shownPath_(shownPath), file_(open(path)) {}

    std::string readAll() const {
        std::string bytes(size(), '\0');
        DWORD count = 0;
        if (!ReadFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                      nullptr)) {
            refuseForLastError();
        }
        bytes.resize(count);
        return bytes;
    }

    [[noreturn]] void refuse(const std::string& reason) const {
        throw Failure(ExitCode::kUsage, shownPath_ + " " + reason);
    }

private:
    com::FileHandle open(const std::wstring& path) const {
        const DWORD attributes = GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) refuseForLastError();
        if (attributes & FILE_ATTRIBUTE_DIRECTORY) refuse("is a folder, not a script");
        const HANDLE handle =
            CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
        if (handle == INVALID_HANDLE_VALUE) refuseForLastError();
        com::FileHandle file(handle);
        if (GetFileType(handle) != FILE_TYPE_DISK) refuse("is a device, not a script");
        return file;
    }

    DWORD size() const {
        LARGE_INTEGER size{};
        if (!GetFileSizeEx(file_.get(), &size)) refuseForLastError();
        if (size.QuadPart > kLargestFile) refuse("is too large for a script (over 64 MB)");
        return size.LowPart;
    }

    [[noreturn]] void refuseForLastError() const {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
            refuse("cannot be read: there is no such file");
        }
        refuse("cannot be read: " + systemText(error));
    }

    std::string shownPath_;
    com::FileHandle file_;
};

std::wstring decode(const Reader& file) {
    const std::string bytes = file.readAll();
    try {
        return com::decodeTextFile(bytes);
    } catch (const std::invalid_argument& reason) {
        file.refuse(reason.what());
    }
}

}  // namespace

ScriptFile readScript(const std::string& path) {
    const std::wstring widePath = com::widen(path, CP_UTF8);
    std::wstring text = decode(Reader(path, widePath));
    const std::filesystem::path full(fullPath(widePath));
    return {com::narrow(full.filename().wstring(), CP_UTF8), full.parent_path().wstring(),
            std::move(text)};
}

bool fitsCodePage(std::wstring_view text) {
    if (GetACP() == CP_UTF8 || text.empty()) return true;
    BOOL isReplaced = FALSE;
    WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), static_cast<int>(text.size()),
                        nullptr, 0, nullptr, &isReplaced);
    return !isReplaced;
}

}  // namespace kel::host
