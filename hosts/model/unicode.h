#pragma once
// Between UTF-8, which files and people use, and UTF-16, which the platform uses.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kel::hosts {

// Stands for what is no character.
inline constexpr char16_t kReplacementCharacter = 0xFFFD;

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// A character at the front of a text; half of a pair without its other half counts as one.
struct FrontCharacter {
    char32_t code;
    std::size_t size;  // in units: 2 for a pair, else 1
};

// The first character of a text that is not empty.
FrontCharacter frontCharacter(std::u16string_view text);

// Both ends belong to it.
struct CharacterRange {
    char32_t first;
    char32_t last;
};

bool isIn(std::span<const CharacterRange> ranges, char32_t code);

// Half of a pair without its other half becomes the replacement character.
std::string toUtf8(std::u16string_view text);

// Throws std::invalid_argument when the text is not valid UTF-8.
std::u16string toUtf16(std::string_view text);

// The same, nothing when the text is not valid UTF-8.
std::optional<std::u16string> tryToUtf16(std::string_view text);

}  // namespace kel::hosts
