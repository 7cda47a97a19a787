#include "hosts/trace/model/hexadecimal.h"

#include <stdexcept>

namespace kel::trace {
namespace {

constexpr std::u16string_view kDigits = u"0123456789abcdef";

unsigned digitOf(char16_t character) {
    const std::size_t digit = kDigits.find(character);
    if (digit == kDigits.npos) throw std::invalid_argument("Bytes are not hexadecimal");
    return static_cast<unsigned>(digit);
}

}  // namespace

std::u16string toHexadecimal(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size() * 2);
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

std::string fromHexadecimal(std::u16string_view text) {
    if (text.size() % 2 != 0) throw std::invalid_argument("Half a byte is left");
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes += static_cast<char>(digitOf(text[i]) << 4 | digitOf(text[i + 1]));
    return bytes;
}

}  // namespace kel::trace
