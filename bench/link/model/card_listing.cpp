#include "bench/link/model/card_listing.h"

#include <limits>

#include "bench/link/model/answers.h"

namespace kel::bench {
namespace {

// Three numbers of fixed width with one character between them.
bool takeThree(std::string_view text, std::size_t firstWidth, char between, int* numbers) {
    if (text.size() != firstWidth + 6) return false;
    std::size_t at = 0;
    for (int i = 0; i < 3; ++i) {
        const std::size_t width = i == 0 ? firstWidth : 2;
        if (i > 0 && text[at++] != between) return false;
        const auto number = wholeNumber(text.substr(at, width));
        if (!number || *number < 0) return false;
        numbers[i] = static_cast<int>(*number);
        at += width;
    }
    return true;
}

}  // namespace

std::optional<CardStatus> cardStatus(std::string_view answer) {
    const auto files = numberAfter(answer, "Files");
    const auto used = numberAfter(answer, "Used");
    const auto capacity = numberAfter(answer, "Capacity");
    const auto rate = numberAfter(answer, "Rate");
    if (!files || !used || !capacity || !rate) return std::nullopt;
    return CardStatus{*files, *used, *capacity, *rate};
}

std::optional<CardEntry> cardEntry(std::string_view line) {
    const auto number = wholeNumber(takeFirstWord(line));
    const auto size = wholeNumber(takeFirstWord(line));
    int date[3];
    int time[3];
    if (!takeThree(takeFirstWord(line), 4, '/', date)) return std::nullopt;
    if (!takeThree(takeFirstWord(line), 2, ':', time)) return std::nullopt;
    if (!number || *number < 0 || !size || *size < 0 || line.empty()) return std::nullopt;
    return CardEntry{*number, *size,   date[0], date[1],          date[2],
                     time[0], time[1], time[2], std::string(line)};
}

Progress progressOf(std::int64_t done, std::int64_t total) {
    while (total > std::numeric_limits<std::int32_t>::max()) {
        done /= 2;
        total /= 2;
    }
    return {static_cast<std::int32_t>(done), static_cast<std::int32_t>(total)};
}

}  // namespace kel::bench
