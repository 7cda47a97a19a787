#pragma once
// The files that a download leaves: into a recording, and back to where they were.

#include <windows.h>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "hosts/trace/file.h"
#include "hosts/trace/session.h"

namespace kel::trace {

// Watches the names of a selection in the folder of a download, and tells which files are there
// that were not, or are others. Names that lead out of the folder are nobody's business here.
class DownloadedFiles {
public:
    DownloadedFiles(TracedObject& object, const std::wstring& folder, const Json& names);

    // The recorder begins with a file, empty for none: the one before has been left.
    void starts(const std::wstring& name) noexcept;
    // The download has returned.
    void tellAll() noexcept;

private:
    struct Trace {
        FILETIME created{};
        FILETIME written{};
        std::int64_t size = -1;  // there is no file

        bool operator==(const Trace& other) const;
    };

    Trace traceOf(const std::wstring& name) const;
    void tell(const std::wstring& name) noexcept;
    void tellPieces(const std::wstring& name, std::int64_t size);

    TracedObject& object_;
    const std::wstring folder_;
    std::map<std::wstring, Trace, std::less<>> before_;
    std::wstring started_;
};

// Puts the pieces of recorded files into a folder, one file after the other.
class RestoredFiles {
public:
    explicit RestoredFiles(std::wstring folder) : folder_(std::move(folder)) {}

    // Why that cannot be done; empty when it is.
    std::string put(const FilePiece& piece);

private:
    const std::wstring folder_;
    std::u16string name_;
    std::int64_t offset_ = 0;
    File file_;
};

}  // namespace kel::trace
