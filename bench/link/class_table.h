// The creatable classes of the library.
#pragma once

#include <span>

#include "com/class_table.h"

namespace kel::bench {

std::span<com::ClassRow> classTable();

}  // namespace kel::bench
