#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/instrument/line_output.h"

namespace kel::bench {

// What is on the recorder's card at first:
//   none      there is no card
//   usual     five files, some thousand bytes together
//   empty     no file
//   full      one file that leaves no room
//   clash     files whose names differ in nothing, or in case only
//   hostile   names that no folder should see
//   many      ten thousand small files
//   large     a file of more than four gigabytes
enum class CardKind { kNone, kUsual, kEmpty, kFull, kClash, kHostile, kMany, kLarge };

// Nothing for a word that names no kind.
std::optional<CardKind> cardKind(std::string_view word);

struct CardFile {
    std::string name;
    std::int64_t size;
    std::chrono::local_seconds time;
};

// Some bytes of a file. They follow from its name, its size and their place alone.
std::string cardContent(const CardFile& file, std::int64_t offset, std::size_t count);

// The recorder's card. A file is known by its number, for names may be alike.
class Card {
public:
    explicit Card(CardKind kind);

    bool present() const { return present_; }
    const std::vector<CardFile>& files() const { return files_; }
    std::int64_t used() const;
    std::int64_t capacity() const { return capacity_; }

    // Bits a second.
    long rate() const { return rate_; }
    void setRate(long rate) { rate_ = rate; }

    // Empties the card, at the end of the time that it takes.
    void format(Duration now);
    // Tells the card the time; true while it is being formatted.
    bool busy(Duration now);
    // Ends a format that has not come to its end; the files are still there.
    void cancel(Duration now);

    static constexpr Duration kFormatTime = std::chrono::seconds{5};

private:
    bool present_;
    std::int64_t capacity_;
    std::vector<CardFile> files_;
    long rate_ = 57600;
    std::optional<Duration> formatted_;
};

}  // namespace kel::bench
