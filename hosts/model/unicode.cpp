#include "hosts/model/unicode.h"

#include <algorithm>
#include <stdexcept>

namespace kel::hosts {
namespace {

constexpr char32_t kFirstBeyond16Bits = 0x10000;
constexpr char32_t kLastCharacter = 0x10FFFF;

void appendUtf8(std::string& text, char32_t character) {
    const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
    const auto appendTail = [&](int shift) { append(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) return append(character);
    if (character < 0x800) {
        append(0xC0 | (character >> 6));
    } else if (character < kFirstBeyond16Bits) {
        append(0xE0 | (character >> 12));
        appendTail(6);
    } else {
        append(0xF0 | (character >> 18));
        appendTail(12);
        appendTail(6);
    }
    appendTail(0);
}

void appendUtf16(std::u16string& text, char32_t character) {
    if (character < kFirstBeyond16Bits) {
        text += static_cast<char16_t>(character);
        return;
    }
    const char32_t offset = character - kFirstBeyond16Bits;
    text += static_cast<char16_t>(0xD800 + (offset >> 10));
    text += static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
}

struct Lead {
    int tailSize = 0;
    char32_t bits = 0;
    char32_t smallest = 0;  // a smaller character has a shorter form, which is the only valid one
};

std::optional<Lead> readLead(unsigned char byte) {
    if (byte < 0x80) return Lead{0, byte, 0};
    if ((byte & 0xE0) == 0xC0) return Lead{1, static_cast<char32_t>(byte & 0x1F), 0x80};
    if ((byte & 0xF0) == 0xE0) return Lead{2, static_cast<char32_t>(byte & 0x0F), 0x800};
    if ((byte & 0xF8) == 0xF0) return Lead{3, static_cast<char32_t>(byte & 0x07), 0x10000};
    return std::nullopt;
}

// Takes one character from the front of `rest`.
std::optional<char32_t> takeCharacter(std::string_view& rest) {
    const auto lead = readLead(static_cast<unsigned char>(rest.front()));
    rest.remove_prefix(1);
    if (!lead || rest.size() < static_cast<std::size_t>(lead->tailSize)) return std::nullopt;
    char32_t character = lead->bits;
    for (int i = 0; i < lead->tailSize; ++i) {
        const auto byte = static_cast<unsigned char>(rest.front());
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        character = character << 6 | (byte & 0x3F);
        rest.remove_prefix(1);
    }
    const bool isValid = character >= lead->smallest && character <= kLastCharacter &&
                         !isHighSurrogate(character) && !isLowSurrogate(character);
    return isValid ? std::optional(character) : std::nullopt;
}

}  // namespace

FrontCharacter frontCharacter(std::u16string_view text) {
    const char32_t code = text[0];
    if (!isHighSurrogate(code) || text.size() < 2 || !isLowSurrogate(text[1])) return {code, 1};
    return {kFirstBeyond16Bits + ((code - 0xD800) << 10) + (text[1] - 0xDC00), 2};
}

bool isIn(std::span<const CharacterRange> ranges, char32_t code) {
    return std::ranges::any_of(ranges, [&](const CharacterRange& range) {
        return code >= range.first && code <= range.last;
    });
}

std::string toUtf8(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto [code, size] = frontCharacter(text);
        const bool isHalf = isHighSurrogate(code) || isLowSurrogate(code);
        appendUtf8(result, isHalf ? kReplacementCharacter : code);
        text.remove_prefix(size);
    }
    return result;
}

std::u16string toUtf16(std::string_view text) {
    auto result = tryToUtf16(text);
    if (!result) throw std::invalid_argument("The text is not UTF-8");
    return *std::move(result);
}

std::optional<std::u16string> tryToUtf16(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto character = takeCharacter(text);
        if (!character) return std::nullopt;
        appendUtf16(result, *character);
    }
    return result;
}

}  // namespace kel::hosts
