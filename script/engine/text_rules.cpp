#include "script/engine/text_rules.h"

#include <algorithm>

namespace kel::script {
namespace {

char lowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool TextRules::isLeadByte(unsigned char /*byte*/) const {
    return false;
}

bool TextRules::isLetter(unsigned char byte) const {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

std::string TextRules::fold(std::string_view text) const {
    std::string folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), lowerAscii);
    return folded;
}

bool TextRules::equal(std::string_view left, std::string_view right) const {
    return left == right || fold(left) == fold(right);
}

Characters::Characters(const TextRules& rules) {
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        const auto byte = static_cast<unsigned char>(i);
        const char c = static_cast<char>(byte);
        if (rules.isLetter(byte) || isDigit(c) || c == '_') classes_[i] |= kName;
        if (c == ' ' || c == '\t' || c == '\v' || c == '\f') classes_[i] |= kBlank;
        if (c == '%' || c == '#' || c == '"') classes_[i] |= kMark;
        if (rules.isLeadByte(byte)) {
            classes_[i] |= kLead;
            hasLeadBytes_ = true;
        }
    }
}

std::string_view Characters::trim(std::string_view text) const {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool equalsWord(std::string_view text, std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                      [](char a, char b) { return lowerAscii(a) == lowerAscii(b); });
}

}  // namespace kel::script
