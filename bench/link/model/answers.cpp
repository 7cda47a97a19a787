#include "bench/link/model/answers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace kel::bench {
namespace {

constexpr std::int64_t kMostInBlock = 65536;
constexpr std::int64_t kLargestChecksum = 0xFFFFFFFF;

template <class Number, class... Format>
std::optional<Number> numberOf(std::string_view word, Format... format) {
    Number value{};
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value, format...);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return value;
}

}  // namespace

std::string_view takeFirstWord(std::string_view& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

std::optional<double> decimalNumber(std::string_view word) {
    const auto number = numberOf<double>(word, std::chars_format::fixed);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<std::int64_t> wholeNumber(std::string_view word, int base) {
    return numberOf<std::int64_t>(word, base);
}

std::optional<std::int64_t> numberAfter(std::string_view answer, std::string_view name) {
    while (!answer.empty()) {
        const std::size_t end = std::min(answer.find('\n'), answer.size());
        std::string_view line = answer.substr(0, end);
        answer.remove_prefix(std::min(end + 1, answer.size()));
        if (takeFirstWord(line) == std::string(name) + ":") return wholeNumber(line);
    }
    return std::nullopt;
}

std::optional<std::vector<double>> leadingNumbers(std::string_view line, std::size_t count) {
    std::vector<double> numbers;
    while (numbers.size() < count) {
        const auto number = decimalNumber(takeFirstWord(line));
        if (!number) return std::nullopt;
        numbers.push_back(*number);
    }
    return numbers;
}

std::optional<BlockHeader> blockHeader(std::string_view line) {
    if (takeFirstWord(line) != "DATA") return std::nullopt;
    const auto count = wholeNumber(takeFirstWord(line));
    const auto checksum = wholeNumber(line, 16);
    const bool makesSense = count && checksum && *count > 0 && *count <= kMostInBlock &&
                            *checksum >= 0 && *checksum <= kLargestChecksum;
    if (!makesSense) return std::nullopt;
    return BlockHeader{static_cast<std::size_t>(*count), static_cast<std::uint32_t>(*checksum)};
}

}  // namespace kel::bench
