#include "bench/instrument/line_output.h"

#include <algorithm>

namespace kel::bench {

void LineOutput::push(std::string_view bytes, Duration due, double garbleRate) {
    if (bytes.empty()) return;
    if (pieces_.empty() || due > pieces_.back().due) pieces_.push_back({due, {}});
    auto& piece = pieces_.back().bytes;
    if (garbleRate == 0) {
        piece.append(bytes);
        return;
    }
    for (const char byte : bytes)
        piece.push_back(damaged(byte, garbleRate));
}

std::string LineOutput::take(Duration now) {
    std::string bytes;
    while (!pieces_.empty() && pieces_.front().due <= now) {
        bytes += pieces_.front().bytes;
        pieces_.pop_front();
    }
    return bytes;
}

std::optional<Duration> LineOutput::nextDue() const {
    if (pieces_.empty()) return std::nullopt;
    return pieces_.front().due;
}

std::optional<Duration> LineOutput::lastDue() const {
    if (pieces_.empty()) return std::nullopt;
    return pieces_.back().due;
}

char LineOutput::damaged(char byte, double rate) {
    // The standard distributions differ between libraries; the generator itself does not.
    const double draw = static_cast<double>(random_()) / 4294967296.0;
    if (draw >= rate) return byte;
    return static_cast<char>(byte ^ (1 << (random_() % 7)));
}

}  // namespace kel::bench
