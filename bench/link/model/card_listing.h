#pragma once
// What the instrument tells of its recorder's card.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kel::bench {

struct CardStatus {
    std::int64_t files = 0;
    std::int64_t used = 0;
    std::int64_t capacity = 0;
    std::int64_t rate = 0;
};

// Nothing where one of its numbers is missing.
std::optional<CardStatus> cardStatus(std::string_view answer);

struct CardEntry {
    std::int64_t number;
    std::int64_t size;
    int year, month, day, hour, minute, second;
    std::string name;
};

// A line of the listing: "NUMBER SIZE YYYY/MM/DD HH:MM:SS NAME".
std::optional<CardEntry> cardEntry(std::string_view line);

// Progress in 32 bits: both halved until they fit.
struct Progress {
    std::int32_t done;
    std::int32_t total;
};
Progress progressOf(std::int64_t done, std::int64_t total);

}  // namespace kel::bench
