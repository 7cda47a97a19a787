#pragma once
// What this process holds of the platform.

#include <cstddef>
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

}  // namespace kel::test
