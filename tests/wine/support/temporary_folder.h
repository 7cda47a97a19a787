#pragma once
// A folder that goes with the test.

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kel::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        wchar_t folder[MAX_PATH], name[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        GetTempFileNameW(folder, L"kel", 0, name);
        path_ = name;
        DeleteFileW(name);
        EXPECT_TRUE(CreateDirectoryW(name, nullptr));
    }
    ~TemporaryFolder() {
        std::error_code failure;
        std::filesystem::remove_all(path_, failure);
        EXPECT_FALSE(failure) << failure.message();
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::wstring& path() const { return path_; }

    // Writes a file and gives its path.
    std::wstring file(const std::wstring& name, std::string_view bytes) const {
        const std::wstring path = path_ + L"\\" + name;
        FILE* file = _wfopen(path.c_str(), L"wb");
        EXPECT_EQ(fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
        fclose(file);
        return path;
    }

    // The bytes of a file; "none" when there is no such file.
    std::string content(const std::wstring& name) const {
        FILE* file = _wfopen((path_ + L"\\" + name).c_str(), L"rb");
        if (!file) return "none";
        std::string bytes;
        char buffer[4096];
        while (const std::size_t count = fread(buffer, 1, sizeof buffer, file))
            bytes.append(buffer, count);
        fclose(file);
        return bytes;
    }

    // The names of all files, in their order.
    std::vector<std::wstring> names() const {
        std::vector<std::wstring> names;
        WIN32_FIND_DATAW found;
        const HANDLE search = FindFirstFileW((path_ + L"\\*").c_str(), &found);
        do {
            const bool isFolder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
            if (!isFolder) names.push_back(found.cFileName);
        } while (FindNextFileW(search, &found));
        FindClose(search);
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::wstring path_;
};

}  // namespace kel::test
