#pragma once
// What the instrument sends, made readable on a terminal and in a file.

#include <string>
#include <string_view>

namespace kel::kelrun {

// Takes the dialogue piece by piece. Instruments end lines in CR LF, LF or CR, and a line end may
// be cut in two by the pieces: each becomes one LF, so that no line is written over another. Other
// control characters become visible signs; a tab stays.
class DialogueText {
public:
    // The readable form of the next piece, as UTF-8.
    std::string next(std::u16string_view piece);

    // True when the last piece ended a line, or nothing has come yet.
    bool atLineStart() const { return atLineStart_; }

private:
    bool afterReturn_ = false;
    bool atLineStart_ = true;
};

// Picks the lines out of a dialogue that report an error of the script.
class ErrorLines {
public:
    // The error lines that end in this piece of readable text.
    std::string next(std::string_view piece);

    // The line that has not ended yet, when it reports an error.
    std::string finish();

private:
    std::string line_;
};

}  // namespace kel::kelrun
