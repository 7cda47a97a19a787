#include "bench/link/access/partial_file.h"

#include "com/error.h"

namespace kel::bench {
namespace {

[[noreturn]] void failOn(const std::wstring& path) {
    const DWORD error = GetLastError();
    throw com::Error(HRESULT_FROM_WIN32(error),
                     L"'" + path + L"' cannot be written: error " + std::to_wstring(error));
}

}  // namespace

PartialFile::PartialFile(const std::wstring& folder) {
    wchar_t name[MAX_PATH];
    if (GetTempFileNameW(folder.c_str(), L"kel", 0, name) == 0) failOn(folder);
    path_ = name;
    file_ = com::FileHandle(CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file_) {
        const DWORD error = GetLastError();
        DeleteFileW(name);
        SetLastError(error);
        failOn(folder);
    }
}

PartialFile::~PartialFile() {
    file_ = com::FileHandle();
    if (!path_.empty()) DeleteFileW(path_.c_str());
}

void PartialFile::write(std::string_view bytes) {
    DWORD written = 0;
    if (!WriteFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                   nullptr) ||
        written != bytes.size()) {
        failOn(path_);
    }
}

void PartialFile::keepAs(const std::wstring& path) {
    file_ = com::FileHandle();
    if (!MoveFileExW(path_.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) failOn(path);
    path_.clear();
}

}  // namespace kel::bench
