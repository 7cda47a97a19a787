#pragma once
// What is written down of a run: the transcript and the report, each in its file.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "com/handles.h"
#include "hosts/kelrun/model/options.h"
#include "hosts/kelrun/model/report.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {

// A file that is written while others may read it. A disk that takes no more does not end the run.
class LogFile {
public:
    // `path` is UTF-8. Throws Failure (the file cannot be written).
    explicit LogFile(const std::string& path);

    void append(std::string_view text) { writeAt(size_, text); }
    void writeAt(std::uint64_t offset, std::string_view text);

    // True when something is missing in the file.
    bool isBroken() const { return isBroken_; }

private:
    com::FileHandle file_;
    std::uint64_t size_ = 0;
    bool isBroken_ = false;
};

// Each entry is in the files as soon as it is told.
class RunLog {
public:
    // `scriptName` is UTF-8; `source`, the script's text, must outlive this. Throws Failure (a file
    // cannot be written).
    RunLog(const Options& options, std::string scriptName, std::wstring_view source);

    // Null when nothing is to be written down.
    Transcript* transcript() { return transcript_ ? &*transcript_ : nullptr; }

    void ended(ExitCode code, std::string_view words);

    // The names of what could not be written to its end.
    std::vector<std::string> incomplete() const;

private:
    void tell(const Entry& entry);
    long long milliseconds() const;

    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::optional<LogFile> transcriptFile_;
    std::optional<LogFile> reportFile_;
    std::optional<Report> report_;
    std::optional<Transcript> transcript_;
};

}  // namespace kel::kelrun
