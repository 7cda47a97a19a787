#pragma once
// Arrays of bytes as automation values.

#include <string>
#include <string_view>

#include "com/variant.h"

namespace kel::bench {

// An array of VT_UI1 with lower bound 0.
com::Variant byteArray(std::string_view bytes);

// The bytes of such an array, or of a reference to one. Throws com::Error for anything else.
std::string bytesOf(const VARIANT& array);

}  // namespace kel::bench
