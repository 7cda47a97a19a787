#pragma once
// The most memory that this process has had.

#include <cstdint>

namespace kel::bench {

// In bytes of resident memory, code and libraries included.
std::uint64_t peakMemory();

}  // namespace kel::bench
