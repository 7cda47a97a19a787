#include "ui/model/placement.h"

#include <algorithm>

namespace kel::ui {

Rectangle centred(const Rectangle& window, const Rectangle& over, const Rectangle& workArea) {
    const auto inside = [](int wanted, int size, int first, int last) {
        return std::max(std::min(wanted, last - size), first);
    };
    const int left = inside(over.left + (over.width() - window.width()) / 2, window.width(),
                            workArea.left, workArea.right);
    const int top = inside(over.top + (over.height() - window.height()) / 2, window.height(),
                           workArea.top, workArea.bottom);
    return {left, top, left + window.width(), top + window.height()};
}

}  // namespace kel::ui
