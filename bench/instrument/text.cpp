#include "bench/instrument/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace kel::bench {

namespace {

constexpr std::string_view kBlanks = " \t";

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

}  // namespace

std::string_view trim(std::string_view text) {
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view takeWord(std::string_view& text) {
    text = trim(text);
    const auto word = text.substr(0, text.find_first_of(kBlanks));
    text = trim(text.substr(word.size()));
    return word;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

std::optional<double> parseNumber(std::string_view text) {
    double value = 0;
    const auto end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    if (error != std::errc{} || stop != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::string formatNumber(double value, int decimals) {
    std::array<char, 64> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, decimals);
    return {buffer.data(), result.ptr};
}

std::optional<std::chrono::local_seconds> parseMoment(std::string_view text) {
    constexpr std::string_view kForm = "dddd/dd/dd dd:dd:dd";
    if (text.size() != kForm.size()) return std::nullopt;

    std::array<int, 6> fields{};
    std::size_t field = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (digit != (kForm[i] == 'd') || (!digit && text[i] != kForm[i])) return std::nullopt;
        if (digit) {
            fields[field] = fields[field] * 10 + (text[i] - '0');
        } else {
            ++field;
        }
    }

    const auto [year, month, day, hour, minute, second] = fields;
    const std::chrono::year_month_day date{std::chrono::year{year},
                                           std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return std::chrono::local_days{date} + std::chrono::hours{hour} + std::chrono::minutes{minute} +
           std::chrono::seconds{second};
}

std::string formatMoment(std::chrono::local_seconds moment) {
    const auto days = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date{days};
    const std::chrono::hh_mm_ss time{moment - days};
    std::array<char, 64> buffer;
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%04d/%02u/%02u %02d:%02d:%02d",
        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
        static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return {buffer.data(), static_cast<std::size_t>(length)};
}

}  // namespace kel::bench
