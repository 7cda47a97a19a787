#pragma once
// Whether an instrument that measures has fallen silent.

#include <algorithm>
#include <cstdint>

namespace kel::service {

// Times are in milliseconds, of any clock.
class Silence {
public:
    explicit Silence(std::uint64_t start) : last_(start) {}

    // A measurement came.
    void heard(std::uint64_t now) {
        interval_ = now - last_;
        last_ = now;
    }

    // Slow instruments are given the time of some measurements.
    bool isSilent(std::uint64_t now) const {
        return now - last_ >= std::max(kShortest, kMissing * interval_);
    }

private:
    static constexpr std::uint64_t kShortest = 5000;
    static constexpr std::uint64_t kMissing = 3;

    std::uint64_t last_;
    std::uint64_t interval_ = 0;
};

}  // namespace kel::service
