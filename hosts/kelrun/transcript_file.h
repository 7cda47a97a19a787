#pragma once
// The transcript of a run in its file.

#include <chrono>
#include <string>
#include <string_view>

#include "com/handles.h"
#include "hosts/kelrun/model/transcript.h"

namespace kel::kelrun {

// Each line is in the file as soon as it is written. A disk that takes no more does not end the
// run.
class TranscriptFile {
public:
    // `path` and `scriptName` are UTF-8; `source`, the script's text, must outlive this. Throws
    // Failure (the file cannot be written).
    TranscriptFile(const std::string& path, std::string scriptName, std::wstring_view source);

    Transcript& transcript() { return transcript_; }

    // True when something is missing in the file.
    bool isIncomplete() const { return broken_ || transcript_.isIncomplete(); }

private:
    void write(std::string_view line);
    long long milliseconds() const;

    com::FileHandle file_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool broken_ = false;
    Transcript transcript_;
};

}  // namespace kel::kelrun
