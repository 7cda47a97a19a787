#include "bench/instrument/card.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "bench/checksum.h"

namespace kel::bench {

namespace {

constexpr std::int64_t kGigabyte = 1 << 30;
constexpr int kMany = 10'000;
constexpr std::string_view kKinds[] = {"none",  "usual",   "empty", "full",
                                       "clash", "hostile", "many",  "large"};

struct Content {
    std::string name;
    std::int64_t size;
};

std::vector<Content> contents(CardKind kind) {
    switch (kind) {
        case CardKind::kNone:
        case CardKind::kEmpty:
            return {};
        case CardKind::kUsual:
            return {{"DAY001.DAT", 20'000},
                    {"DAY002.DAT", 8'192},
                    {"DAY003.DAT", 4'097},
                    {"EMPTY.DAT", 0},
                    {"SETUP.TXT", 1}};
        case CardKind::kFull:
            return {{"FULL.DAT", 2 * kGigabyte}};
        case CardKind::kClash:
            return {{"SAME.DAT", 100}, {"same.dat", 200}, {"SAME.DAT", 300}};
        case CardKind::kHostile:
            return {{"GOOD.DAT", 50}, {"..\\x", 1},
                    {"../x", 2},      {"C:x", 3},
                    {"\\x", 4},       {"..", 5},
                    {"con", 6},       {"Aux.txt", 7},
                    {"LPT1 .dat", 8}, {"x:stream", 9},
                    {"end.", 10},     {"tab\tin it", 11},
                    {"what?", 12},    {std::string(300, 'n'), 13},
                    {"LAST.DAT", 60}};
        case CardKind::kMany: {
            std::vector<Content> many;
            many.reserve(kMany);
            for (int i = 0; i < kMany; ++i)
                many.push_back({"F" + std::to_string(i) + ".DAT", i});
            return many;
        }
        case CardKind::kLarge:
            return {{"LARGE.DAT", 5 * kGigabyte}, {"SMALL.DAT", 10}};
    }
    return {};
}

}  // namespace

std::optional<CardKind> cardKind(std::string_view word) {
    const auto found = std::find(std::begin(kKinds), std::end(kKinds), word);
    if (found == std::end(kKinds)) return std::nullopt;
    return static_cast<CardKind>(found - std::begin(kKinds));
}

std::string cardContent(const CardFile& file, std::int64_t offset, std::size_t count) {
    const auto seed = crc32(file.name) ^ static_cast<std::uint32_t>(file.size) * 0x9E3779B1u;
    std::string bytes(count, '\0');
    for (auto& byte : bytes) {
        auto mixed = seed + static_cast<std::uint32_t>(offset++);
        mixed = (mixed ^ (mixed >> 15)) * 0x2C1B3C6Du;
        byte = static_cast<char>(mixed >> 24);
    }
    return bytes;
}

Card::Card(CardKind kind)
    : present_(kind != CardKind::kNone),
      capacity_((kind == CardKind::kFull ? 2
                 : present_              ? 8
                                         : 0) *
                kGigabyte) {
    constexpr auto kFirst = std::chrono::local_days{std::chrono::year{2024} / 1 / 31};
    for (auto& [name, size] : contents(kind)) {
        const auto hours = std::chrono::hours{25} * static_cast<int>(files_.size());
        files_.push_back({std::move(name), size, kFirst + hours});
    }
}

std::int64_t Card::used() const {
    return std::accumulate(files_.begin(), files_.end(), std::int64_t{0},
                           [](std::int64_t sum, const CardFile& file) { return sum + file.size; });
}

void Card::format(Duration now) {
    formatted_ = now + kFormatTime;
}

bool Card::busy(Duration now) {
    if (!formatted_) return false;
    if (now < *formatted_) return true;
    formatted_.reset();
    files_.clear();
    return false;
}

void Card::cancel(Duration now) {
    if (busy(now)) formatted_.reset();
}

}  // namespace kel::bench
