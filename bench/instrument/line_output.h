#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace kel::bench {

// Time of the model since the instrument was switched on; its owner is the clock.
using Duration = std::chrono::microseconds;

// What the instrument has said and the line has not carried away yet, in order and with the times
// from which each piece may go. Damages bytes, the same ones for the same seed.
class LineOutput {
public:
    explicit LineOutput(std::uint32_t seed) : random_(seed) {}

    // A piece never overtakes an earlier one: its time is moved back if need be. Of its bytes that
    // share is damaged.
    void push(std::string_view bytes, Duration due, double garbleRate);
    // Everything that may go at `now`.
    std::string take(Duration now);
    // When the first piece may go; nothing when there is none.
    std::optional<Duration> nextDue() const;
    // When the last piece may go; nothing when there is none.
    std::optional<Duration> lastDue() const;
    void clear() { pieces_.clear(); }

private:
    struct Piece {
        Duration due;
        std::string bytes;
    };

    char damaged(char byte, double rate);

    std::mt19937 random_;
    std::deque<Piece> pieces_;
};

}  // namespace kel::bench
