#pragma once
// Writes an HTML 4.0 file line by line and closes by itself what its owner leaves open.

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kel::html {

// Texts go into the file as they are given: nothing is escaped. Without an open file nothing is
// written. Where writing fails, as on a full disk, the file lacks what did not find room.
class HTMLStream {
public:
    HTMLStream() = default;
    // As Close.
    ~HTMLStream() { Close(); }
    HTMLStream(const HTMLStream&) = delete;
    HTMLStream& operator=(const HTMLStream&) = delete;

    // Creates or empties a file, and closes the one before. False when it cannot be written.
    bool Open(const std::filesystem::path& path);

    // Everything up to the end of the head. A style sheet may be null or empty for none.
    void BeginDocument(std::string_view title, const char* styleSheet = nullptr);

    // Opens an element. Class and attributes may be null or empty for none.
    void OpenTag(std::string_view name, const char* className = nullptr,
                 const char* attributes = nullptr);
    // Closes the element that was opened last; nothing where none is open.
    void CloseTag();

    // An element from its opening tag to its closing one. Without a text (null) nothing stands
    // between them.
    void WriteElement(std::string_view name, const char* text, const char* className = nullptr,
                      const char* attributes = nullptr);

    // A line of the owner's own.
    void WriteLine(std::string line);

    // Closes the elements that are still open, the last one first, and the file.
    void Close();

private:
    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, FileCloser> file_;
    std::vector<std::string> openElements_;
};

}  // namespace kel::html
