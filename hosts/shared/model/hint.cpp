#include "hosts/shared/model/hint.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace kel::host {
namespace {

constexpr std::string_view kNotFound = "Variable not found: ";
constexpr std::string_view kNoFunction = "Invalid function name: ";
constexpr std::string_view kNoExpression = "Invalid expression ";
constexpr std::string_view kNoCondition = "Invalid syntax in #";
constexpr std::string_view kNoDirective = "Unknown preprocessor directive: ";
constexpr std::string_view kUnknownFunction = "Unknown function: ";
constexpr std::string_view kDirectives[] = {"DIALOG",  "ELSE",      "ELSEIF",      "ENDDIALOG",
                                            "ENDIF",   "IF",        "MSGBOX",      "RUNSCRIPT",
                                            "SETCOMM", "SENDBREAK", "SETBAUDRATE", "WAIT",
                                            "WAIT_OK", "WAKEUP",    "WAIT_PROMPT"};
constexpr std::string_view kFunctions[] = {"CHECK",  "DATE",         "INPUT",
                                           "SELECT", "SERIALNUMBER", "TIME"};
constexpr std::string_view kBlanks = " \t";

bool isBlank(std::string_view text, std::size_t at) {
    return at < text.size() && kBlanks.find(text[at]) != std::string_view::npos;
}

// True when the word stands in the line where a value is compared or assigned.
bool isValue(std::string_view word, std::string_view line) {
    for (std::size_t at = line.find(word); at != std::string_view::npos;
         at = line.find(word, at + 1)) {
        const std::size_t before = line.substr(0, at).find_last_not_of(kBlanks);
        const std::size_t end = at + word.size();
        if (before != std::string_view::npos && line[before] == '=' &&
            (end == line.size() || isBlank(line, end))) {
            return true;
        }
    }
    return false;
}

// An assignment whose sign has blanks beside it.
bool hasBlanksBesideSign(std::string_view line) {
    const std::size_t start = line.find_first_not_of(kBlanks);
    if (start == std::string_view::npos || line[start] != '@') return false;
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos) return false;
    return isBlank(line, sign - 1) || isBlank(line, sign + 1);
}

std::string inQuotes(std::string_view word, std::string_view line) {
    if (word.empty() || word.find('"') != std::string_view::npos || !isValue(word, line)) return {};
    if (word.size() > 2 && word.starts_with('\'') && word.ends_with('\''))
        word = word.substr(1, word.size() - 2);
    return "a text needs double quotes: \"" + std::string(word) + '"';
}

// How many letters must be put in, left out, changed or exchanged with their neighbours to make one
// word of the other.
std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> older, old, now(right.size() + 1);
    for (std::size_t column = 0; column <= right.size(); ++column)
        now[column] = column;
    for (std::size_t row = 1; row <= left.size(); ++row) {
        older = std::exchange(old, now);
        now[0] = row;
        for (std::size_t column = 1; column <= right.size(); ++column) {
            const bool isSame = left[row - 1] == right[column - 1];
            now[column] = std::min(
                {old[column] + 1, now[column - 1] + 1, old[column - 1] + (isSame ? 0 : 1)});
            if (row > 1 && column > 1 && left[row - 1] == right[column - 2] &&
                left[row - 2] == right[column - 1])
                now[column] = std::min(now[column], older[column - 2] + 1);
        }
    }
    return now.back();
}

// One letter wrong, or two in a long word.
std::string similarWord(std::string_view word, std::span<const std::string_view> words,
                        const char* mark) {
    constexpr std::size_t kLong = 6;
    if (word.size() > 2 * kLong) return {};
    std::string capitals(word);
    for (char& letter : capitals)
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    for (const std::size_t allowed : {1, 2}) {
        for (const std::string_view known : words) {
            if (allowed == 2 && known.size() < kLong) continue;
            if (distance(capitals, known) <= allowed)
                return std::string("did you mean ").append(mark).append(known).append("?");
        }
    }
    return {};
}

}  // namespace

std::string hint(std::string_view message, std::string_view line) {
    if (message.starts_with(kNotFound)) return inQuotes(message.substr(kNotFound.size()), line);
    if (message.starts_with(kNoDirective))
        return similarWord(message.substr(kNoDirective.size()), kDirectives, "#");
    if (message.starts_with(kUnknownFunction))
        return similarWord(message.substr(kUnknownFunction.size()), kFunctions, "");
    if (message.starts_with(kNoCondition)) return "as in a == \"b\" or a != \"b\", blanks included";
    const bool isNoFunction = message.starts_with(kNoFunction);
    if (!isNoFunction && !message.starts_with(kNoExpression)) return {};
    if (hasBlanksBesideSign(line)) return "no blanks beside the = of an assignment";
    return isNoFunction ? inQuotes(message.substr(kNoFunction.size()), line) : std::string();
}

}  // namespace kel::host
