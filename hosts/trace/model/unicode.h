#pragma once
// Between the texts of the border (UTF-16, not always well formed) and those of the file (UTF-8).

#include <cstddef>
#include <string>
#include <string_view>

namespace kel::trace {

// A unit that is half of a character without its other half becomes the three bytes that its
// number has; utf16() gives it back.
std::string utf8(std::u16string_view text);

// Throws std::invalid_argument for bytes that utf8() never writes.
std::u16string utf16(std::string_view bytes);

inline bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

inline bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The number of units of the character at `index`: 2 for a pair, else 1.
std::size_t unitsOfCharacter(std::u16string_view text, std::size_t index);

}  // namespace kel::trace
