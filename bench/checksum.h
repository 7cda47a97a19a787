#pragma once
// Checksums of bytes that go over the line, and numbers in the form in which they do.

#include <cstdint>
#include <string>
#include <string_view>

namespace kel::bench {

// CRC-32 with the reflected polynomial EDB88320. `before`: that of what came before.
constexpr std::uint32_t crc32(std::string_view bytes, std::uint32_t before = 0) {
    std::uint32_t remainder = ~before;
    for (const char byte : bytes) {
        remainder ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ (remainder & 1 ? 0xEDB88320u : 0u);
    }
    return ~remainder;
}

// Digits in upper case, with leading zeros.
inline std::string hexadecimal(std::uint32_t value, int digits) {
    std::string text;
    for (int i = digits; i-- > 0;)
        text += "0123456789ABCDEF"[(value >> (4 * i)) & 15];
    return text;
}

}  // namespace kel::bench
