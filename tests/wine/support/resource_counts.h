#pragma once
// What this process holds of the platform.

#include <cstddef>
#include <functional>
#include <iosfwd>

namespace kel::test {

struct ResourceCounts {
    std::size_t memory = 0;  // allocated from the process's heaps, in bytes
    std::size_t windows = 0;
    std::size_t graphicsObjects = 0;
    std::size_t handles = 0;
    bool operator==(const ResourceCounts&) const = default;
};

void PrintTo(const ResourceCounts& counts, std::ostream* stream);

ResourceCounts countResources();

// Does something 20 times, or as often as the environment variable KEL_OPENING_ROUNDS tells where
// somebody has the time, and expects that nothing is left of it.
void expectNothingLeft(const std::function<void()>& deed);

}  // namespace kel::test
