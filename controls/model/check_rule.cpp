#include "controls/model/check_rule.h"

#include <algorithm>

namespace kel::controls {

std::vector<int> rowsToCheck(int row, std::span<const int> selected) {
    if (std::find(selected.begin(), selected.end(), row) == selected.end()) return {row};
    return {selected.begin(), selected.end()};
}

}  // namespace kel::controls
