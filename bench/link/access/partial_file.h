#pragma once
// A file that gets its name when it is complete.

#include <windows.h>

#include <string>
#include <string_view>

#include "com/handles.h"

namespace kel::bench {

// Has a name of its own in the folder until then; one that is not kept goes. Failures throw
// com::Error, whose text is for users.
class PartialFile {
public:
    explicit PartialFile(const std::wstring& folder);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    void write(std::string_view bytes);

    // Gives it its name, in place of a file that has it.
    void keepAs(const std::wstring& path);

private:
    std::wstring path_;
    com::FileHandle file_;
};

}  // namespace kel::bench
