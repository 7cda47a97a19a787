#pragma once
// What fuzzers try: functions that take any input and throw a Violation when a promise is broken.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine/diagnostic.h"
#include "script/engine/text_rules.h"

namespace kel::fuzz {

class Violation : public std::logic_error {
    using logic_error::logic_error;
};

inline void require(bool promise, const char* text) {
    if (!promise) throw Violation(text);
}

// Checks the input as a script, and compares with what a run reports before it starts.
void parseAnything(std::string_view input);

// Runs the part before the first zero byte as a script, on a host that draws what it does from the
// bytes after it.
void runAnything(std::string_view input);

// Reads the input as persisted properties of a control.
void restoreAnything(std::string_view input);

// Reads a list of texts of the settings store that the input has left there: its length (4 bytes,
// the low one first), then for each value its size (2 bytes; 0xFFFF: there is none) and its bytes.
void recallAnything(std::string_view input);

// Gives the file chooser the input, two bytes a character, as its kinds of file.
void filterAnything(std::string_view input);

// Reads the input as a recording of an instrument link, writes it anew, and replays it.
void replayAnything(std::string_view input);

// Tells a report what the input tells: for each entry its kind and the size of its text (a byte
// each), and the text.
void reportAnything(std::string_view input);

// A code page with two-byte characters and letters beyond ASCII.
class DoubleByteRules : public script::TextRules {
public:
    bool isLeadByte(unsigned char byte) const override { return byte == 0x81; }
    bool isLetter(unsigned char byte) const override {
        return byte == 0xE6 || TextRules::isLetter(byte);
    }
};

// The lines of a text without their ends, found in another way than the engine does.
std::vector<std::string> linesOf(std::string_view text);

// Whether a diagnostic names a place in the text, or the end of one of its lines.
bool isInside(const script::Diagnostic& diagnostic, const std::vector<std::string>& lines);

}  // namespace kel::fuzz
