#pragma once
// Cases that stand in a text file, so that they read as what they are.
//
//     # A remark.
//     > what is done, a line or more
//     ? a setting
//     what is expected, a line or more
//
// Another ">" or "?" begins the next step of the case, an empty line or a remark ends the case.
// Escapes stand for what no line shows: \r \n \t \v \b \0 \\, \e for ESC, \d for DEL.

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace kel::test {

struct Step {
    int line = 0;

    std::vector<std::string> lines;
    std::vector<std::string> settings;

    // Each line with its end, escapes as they stand.
    std::string expected;

    // The lines with an end between them.
    std::string text() const;
};

struct Case {
    std::vector<Step> steps;
};

// The name is relative to the project. Throws when there is no such file, or no case in it.
std::vector<Case> readCases(const char* name);
// The same from a text that is open already.
std::vector<Case> readCases(std::istream& text);

// Names a case by its line.
void PrintTo(const Case& row, std::ostream* stream);

// A text as the file shows it: control characters by their escapes.
std::string escaped(std::string_view text);
std::string unescaped(std::string_view text);

// Takes the first word off a line, with the blank behind it.
std::string takeWord(std::string& line);

}  // namespace kel::test
