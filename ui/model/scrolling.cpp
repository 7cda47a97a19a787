#include "ui/model/scrolling.h"

#include <algorithm>

namespace kel::ui {

int Scrolling::to(int wanted) const {
    return std::max(std::min(wanted, rows - visible), 0);
}

int Scrolling::showing(int row) const {
    return to(std::min(std::max(first, row - visible + 1), row));
}

}  // namespace kel::ui
