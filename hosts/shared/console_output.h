#pragma once
// Standard output and standard error.

#include <windows.h>

#include <string_view>

namespace kel::host {

// Writes UTF-8 to one of the standard handles at once: as it is into a pipe or file, as characters
// onto a console, whatever its code page. A handle that takes no more (the reader of the pipe has
// gone) ends neither the program nor the script.
class ConsoleOutput {
public:
    // STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
    explicit ConsoleOutput(DWORD standardHandle);

    void write(std::string_view text);

    // True once something could not be written; nothing is written any more then.
    bool isBroken() const { return broken_; }

private:
    bool writeBytes(std::string_view text) const;
    bool writeCharacters(std::string_view text) const;

    HANDLE handle_;
    bool isConsole_;
    bool broken_ = false;
};

}  // namespace kel::host
