#include "hosts/shared/model/hint.h"

namespace kel::host {
namespace {

constexpr std::string_view kNotFound = "Variable not found: ";
constexpr std::string_view kNoFunction = "Invalid function name: ";
constexpr std::string_view kNoExpression = "Invalid expression ";
constexpr std::string_view kNoCondition = "Invalid syntax in #";
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

}  // namespace

std::string hint(std::string_view message, std::string_view line) {
    if (message.starts_with(kNotFound)) return inQuotes(message.substr(kNotFound.size()), line);
    if (message.starts_with(kNoCondition)) return "as in a == \"b\" or a != \"b\", blanks included";
    const bool isNoFunction = message.starts_with(kNoFunction);
    if (!isNoFunction && !message.starts_with(kNoExpression)) return {};
    if (hasBlanksBesideSign(line)) return "no blanks beside the = of an assignment";
    return isNoFunction ? inQuotes(message.substr(kNoFunction.size()), line) : std::string();
}

}  // namespace kel::host
