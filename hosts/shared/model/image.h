#pragma once
// What the beginning of a program or library file tells.

#include <string_view>

namespace kel::host {

// How much of a file is to be read for it.
inline constexpr std::size_t kImageStart = 4096;

// 32 or 64, for which kind of programs it is made; 0 when it is neither program nor library.
int imageBits(std::string_view start);

}  // namespace kel::host
