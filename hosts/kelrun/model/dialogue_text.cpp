#include "hosts/kelrun/model/dialogue_text.h"

#include "hosts/model/unicode.h"
#include "hosts/shared/model/visible_text.h"

namespace kel::kelrun {
namespace {

constexpr std::string_view kErrorMark = "ERROR: ";

// Nobody reads further, and an instrument that never ends a line must not fill the memory.
constexpr std::size_t kLongestErrorLine = 4096;

}  // namespace

std::string DialogueText::next(std::u16string_view piece) {
    std::u16string readable;
    readable.reserve(piece.size());
    for (const char16_t character : piece) {
        const bool continuesLineEnd = afterReturn_ && (character == u'\r' || character == u'\n');
        afterReturn_ = character == u'\r';
        if (continuesLineEnd) continue;
        atLineStart_ = character == u'\r' || character == u'\n';
        readable += atLineStart_ ? u'\n' : host::visible(character);
    }
    return hosts::toUtf8(readable);
}

std::string ErrorLines::next(std::string_view piece) {
    std::string errors;
    for (const char c : piece) {
        if (c == '\n') {
            errors += finish();
        } else if (line_.size() < kLongestErrorLine) {
            line_ += c;
        }
    }
    return errors;
}

std::string ErrorLines::finish() {
    const std::string line = std::move(line_) + '\n';
    line_.clear();
    return line.starts_with(kErrorMark) ? line : std::string();
}

}  // namespace kel::kelrun
