#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "bench/instrument/line.h"

namespace kel::bench {

// Reads once from a descriptor that does not block and appends to `bytes`. An end of file and
// any failure but a passing one is a disconnection.
LineEvent receiveFrom(int descriptor, std::string& bytes);

// How many bytes the descriptor took. A failure counts as taken: the next receive tells of it.
std::size_t sendTo(int descriptor, std::string_view bytes);

}  // namespace kel::bench
