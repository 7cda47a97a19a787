#pragma once
// The file to which everything received is appended.

#include <string>
#include <string_view>

#include "com/handles.h"

namespace kel::bench {

class LogFile {
public:
    const std::wstring& path() const { return path_; }

    // Closes the present file and opens another; none for the empty path. When that fails it throws
    // com::Error and the present file stays.
    void open(const std::wstring& path);

    // Throws com::Error when the file does not take the bytes, and keeps no log from then on.
    void append(std::string_view bytes);

private:
    std::wstring path_;
    com::FileHandle file_;
};

}  // namespace kel::bench
