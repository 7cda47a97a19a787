#include "hosts/trace/model/unicode.h"

#include <cstdint>
#include <stdexcept>

namespace kel::trace {
namespace {

void appendUtf8(std::string& bytes, std::uint32_t character) {
    const auto tail = [&](int shift) {
        bytes += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        bytes += static_cast<char>(character);
    } else if (character < 0x800) {
        bytes += static_cast<char>(0xC0 | (character >> 6));
        tail(0);
    } else if (character < 0x10000) {
        bytes += static_cast<char>(0xE0 | (character >> 12));
        tail(6);
        tail(0);
    } else {
        bytes += static_cast<char>(0xF0 | (character >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

[[noreturn]] void refuse() {
    throw std::invalid_argument("The text is not UTF-8");
}

// Takes the character that begins at `index` and moves behind it.
std::uint32_t takeCharacter(std::string_view bytes, std::size_t& index) {
    const auto first = static_cast<unsigned char>(bytes[index++]);
    if (first < 0x80) return first;
    if (first < 0xC2 || first > 0xF4) refuse();

    const int tails = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    std::uint32_t character = first & (0x3Fu >> tails);
    for (int i = 0; i < tails; ++i) {
        if (index == bytes.size()) refuse();
        const auto next = static_cast<unsigned char>(bytes[index++]);
        if ((next & 0xC0) != 0x80) refuse();
        character = character << 6 | (next & 0x3Fu);
    }
    constexpr std::uint32_t kSmallest[] = {0x80, 0x800, 0x10000};
    if (character < kSmallest[tails - 1] || character > 0x10FFFF) refuse();
    return character;
}

}  // namespace

std::size_t unitsOfCharacter(std::u16string_view text, std::size_t index) {
    const bool isPair =
        isHighSurrogate(text[index]) && index + 1 < text.size() && isLowSurrogate(text[index + 1]);
    return isPair ? 2 : 1;
}

std::string utf8(std::u16string_view text) {
    std::string bytes;
    std::size_t units = 0;
    for (std::size_t i = 0; i < text.size(); i += units) {
        units = unitsOfCharacter(text, i);
        const std::uint32_t character =
            units == 1 ? text[i] : 0x10000u + ((text[i] & 0x3FFu) << 10 | (text[i + 1] & 0x3FFu));
        appendUtf8(bytes, character);
    }
    return bytes;
}

std::u16string utf16(std::string_view bytes) {
    std::u16string text;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::uint32_t character = takeCharacter(bytes, i);
        if (character < 0x10000) {
            text += static_cast<char16_t>(character);
        } else {
            text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
        }
    }
    return text;
}

}  // namespace kel::trace
