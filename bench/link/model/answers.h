#pragma once
// What the instrument's answers say.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kel::bench {

// Takes the first word of a text, up to a blank.
std::string_view takeFirstWord(std::string_view& text);

// The number that a word is, whatever the locale; a decimal one is finite.
std::optional<double> decimalNumber(std::string_view word);
std::optional<std::int64_t> wholeNumber(std::string_view word, int base = 10);

// The number in the line that begins with a name: "Used: 17".
std::optional<std::int64_t> numberAfter(std::string_view answer, std::string_view name);

// The numbers at the beginning of a line; nothing when there are fewer.
std::optional<std::vector<double>> leadingNumbers(std::string_view line, std::size_t count);

// The announcement of a block of bytes: "DATA count checksum".
struct BlockHeader {
    std::size_t count;
    std::uint32_t checksum;
};
std::optional<BlockHeader> blockHeader(std::string_view line);

}  // namespace kel::bench
