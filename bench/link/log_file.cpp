#include "bench/link/log_file.h"

#include "com/error.h"

namespace kel::bench {

void LogFile::open(const std::wstring& path) {
    com::FileHandle file;
    if (!path.empty()) {
        file = com::FileHandle(CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) {
            throw com::Error(com::lastError().code(), L"The log file " + path + L" does not open");
        }
    }
    file_ = std::move(file);
    path_ = path;
}

void LogFile::append(std::string_view bytes) {
    if (!file_ || bytes.empty()) return;
    DWORD written = 0;
    const bool done =
        WriteFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    if (done && written == bytes.size()) return;

    const HRESULT code = com::lastError().code();
    const std::wstring path = std::exchange(path_, {});
    file_ = com::FileHandle();
    throw com::Error(code, L"The log file " + path + L" takes no more and is closed");
}

}  // namespace kel::bench
