#pragma once
// A folder that goes with the test.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temporary_file.h"

namespace kel::test {

class TemporaryFolder {
public:
    TemporaryFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("kel" + std::to_string(std::random_device()()))) {
        EXPECT_TRUE(create_directory(path_));
    }
    ~TemporaryFolder() {
        std::error_code failure;
        remove_all(path_, failure);
        EXPECT_FALSE(failure) << failure.message();
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::wstring& path() const { return path_.native(); }

    // Writes a file and gives its path.
    std::wstring file(const std::wstring& name, std::string_view bytes) const {
        EXPECT_TRUE(std::ofstream(path_ / name, std::ios::binary) << bytes << std::flush);
        return path_ / name;
    }

    // The bytes of a file; "none" when there is no such file.
    std::string content(const std::wstring& name) const {
        return exists(path_ / name) ? TemporaryFile::bytesOf(path_ / name) : "none";
    }

    // The names of all files, in their order.
    std::vector<std::wstring> names() const {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            if (!entry.is_directory()) names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

private:
    std::filesystem::path path_;
};

}  // namespace kel::test
