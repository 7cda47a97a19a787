#include "hosts/kelrun/model/source_text.h"

#include <algorithm>

#include "hosts/model/unicode.h"
#include "hosts/shared/model/visible_text.h"

namespace kel::kelrun {
namespace {

constexpr std::size_t kLongestShown = 500;
constexpr std::wstring_view kLineEnds = L"\r\n";

// Marks that stand over or under the character before them.
constexpr hosts::CharacterRange kCombining[] = {
    {0x0300, 0x036F}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};

// Characters of East Asia and pictures, which take two columns of a terminal.
constexpr hosts::CharacterRange kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

// What moves the caret as far as the character moves what follows it.
std::string_view blank(char32_t code) {
    if (code == U'\t') return "\t";
    if (hosts::isIn(kCombining, code)) return "";
    return hosts::isIn(kWide, code) ? "  " : " ";
}

std::string caretLine(std::u16string_view line, std::size_t column, const ByteCount& bytesOf) {
    std::string caret;
    std::size_t next = 1;
    while (!line.empty()) {
        const auto [code, size] = hosts::frontCharacter(line);
        next += bytesOf(line.substr(0, size));
        if (next > column) break;
        caret += blank(code);
        line.remove_prefix(size);
    }
    return caret + '^';
}

}  // namespace

std::u16string SourceText::line(std::size_t number) {
    if (!moveTo(number)) return {};
    const std::wstring_view line = text_.substr(start_, end_ - start_);
    return {line.begin(), line.end()};
}

std::string SourceText::excerpt(std::size_t number, std::size_t column, const ByteCount& bytesOf) {
    if (!moveTo(number) || end_ == start_ || end_ - start_ > kLongestShown) return {};
    const std::u16string text = line(number);
    return host::oneLine(hosts::toUtf8(text)) + '\n' + caretLine(text, column, bytesOf) + '\n';
}

bool SourceText::moveTo(std::size_t number) {
    if (number == 0) return false;
    if (number < number_) *this = SourceText(text_);
    for (; number_ < number; ++number_) {
        if (end_ == text_.size()) return false;
        start_ = end_ + (text_.substr(end_).starts_with(L"\r\n") ? 2 : 1);
        end_ = findEnd();
    }
    return true;
}

std::size_t SourceText::findEnd() const {
    return std::min(text_.find_first_of(kLineEnds, start_), text_.size());
}

}  // namespace kel::kelrun
