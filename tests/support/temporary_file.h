#pragma once
// A file of a test's own, which is gone after it.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace kel::test {

class TemporaryFile {
public:
    // The name is in no code page's range that is narrower than all characters.
    TemporaryFile()
        : path_(std::filesystem::temp_directory_path() /
                (u8"kel \u043a\u00fc" +
                 std::filesystem::path(std::to_string(std::random_device()())).u8string())) {}
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

    bool exists() const { return std::filesystem::exists(path_); }

    // Its bytes; empty where there is no file.
    std::string bytes() const { return bytesOf(path_); }
    static std::string bytesOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path path_;
};

// A text as a file holds it that was written in text mode.
inline std::string asTextFile(const std::string& text) {
#ifdef _WIN32
    std::string bytes;
    for (const char character : text) {
        if (character == '\n') bytes += '\r';
        bytes += character;
    }
    return bytes;
#else
    return text;
#endif
}

}  // namespace kel::test
