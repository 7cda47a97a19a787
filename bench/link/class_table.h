#pragma once
// The creatable classes of the library.

#include <span>

#include "com/class_table.h"

namespace kel::bench {

std::span<com::ClassRow> classTable();

}  // namespace kel::bench
