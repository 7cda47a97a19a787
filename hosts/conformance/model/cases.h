#pragma once
// Cases that stand in a text, so that they read as what they are.
//
//     # A remark.
//     > what is done, a line or more
//     ? a setting
//     what is expected, a line or more
//
// Another ">" or "?" begins the next step of the case, an empty line or a remark ends the case.
// Escapes stand for what no line shows: \r \n \t \v \b \0 \\, \e for ESC, \d for DEL, \xB9 for a
// byte by its digits.

#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace kel::conformance {

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

std::vector<Case> readCases(std::istream& text);

// A text as such a file shows it: control characters by their escapes.
std::string escaped(std::string_view text);
std::string unescaped(std::string_view text);

// Takes the first word off a line, with the blank behind it.
std::string takeWord(std::string& line);

}  // namespace kel::conformance
