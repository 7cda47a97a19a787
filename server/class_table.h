#pragma once
// The creatable classes of KelUtils, in the order in which they are registered.

#include <span>

#include "com/class_table.h"

namespace kel::server {

std::span<com::ClassRow> classTable();

}  // namespace kel::server
