#pragma once
// Bytes as a trace file holds them.

#include <string>
#include <string_view>

namespace kel::trace {

std::u16string toHexadecimal(std::string_view bytes);

// Throws std::invalid_argument for what toHexadecimal() does not give.
std::string fromHexadecimal(std::u16string_view text);

}  // namespace kel::trace
