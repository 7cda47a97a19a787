#include "hosts/conformance/model/cases.h"

#include <algorithm>
#include <utility>

namespace kel::conformance {
namespace {

constexpr std::string_view kLetters = "rntvb0\\ed";
constexpr std::string_view kCharacters{"\r\n\t\v\b\0\\\x1b\x7f", 9};

}  // namespace

std::string Step::text() const {
    std::string text;
    for (const std::string& each : lines)
        text += (&each == &lines.front() ? "" : "\n") + each;
    return text;
}

std::vector<Case> readCases(std::istream& text) {
    std::vector<Case> cases;
    bool isInCase = false;
    bool isDone = false;
    int number = 0;
    for (std::string line; std::getline(text, line);) {
        ++number;
        const bool wasInCase = std::exchange(isInCase, !line.empty() && !line.starts_with("# "));
        if (!isInCase) continue;
        if (!wasInCase) cases.emplace_back();
        const bool isExpected = line[0] != '>' && line[0] != '?';
        std::vector<Step>& steps = cases.back().steps;
        if (!wasInCase || (isDone && !isExpected)) steps.push_back({number, {}, {}, {}});
        isDone = isExpected;
        const std::size_t start = std::min<std::size_t>(2, line.size());
        if (isExpected) {
            steps.back().expected += line + "\n";
        } else if (line[0] == '?') {
            steps.back().settings.push_back(unescaped(line.substr(start)));
        } else {
            steps.back().lines.push_back(unescaped(line.substr(start)));
        }
    }
    return cases;
}

std::string escaped(std::string_view text) {
    std::string shown;
    for (const char character : text) {
        const std::size_t known = kCharacters.find(character);
        shown += known == kCharacters.npos || character == '\\'
                     ? std::string(1, character)
                     : std::string("\\") + kLetters[known];
    }
    return shown;
}

std::string unescaped(std::string_view text) {
    std::string meant;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            meant += text[i];
            continue;
        }
        const char letter = text.at(++i);
        if (letter == 'x') {
            meant += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            meant += kCharacters.at(kLetters.find(letter));
        }
    }
    return meant;
}

std::string takeWord(std::string& line) {
    std::string word = line.substr(0, line.find(' '));
    line.erase(0, std::min(word.size() + 1, line.size()));
    return word;
}

}  // namespace kel::conformance
