#pragma once
// The rule of the check boxes in a list where several rows may be selected.

#include <span>
#include <vector>

namespace kel::controls {

// The rows that take the new state of a row's check box: that row, or all selected ones when it is
// one of several of them.
std::vector<int> rowsToCheck(int row, std::span<const int> selected);

}  // namespace kel::controls
