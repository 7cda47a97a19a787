#include "controls/model/selector_layout.h"

#include <algorithm>

namespace kel::controls {
namespace {

void moveDown(ui::Rectangle& rectangle, int distance) {
    rectangle.top += distance;
    rectangle.bottom += distance;
}

}  // namespace

SelectorLayout layOut(SelectorLayout designed, const SelectorNeeds& needs) {
    SelectorLayout layout = designed;
    const int growth = std::max(needs.promptHeight - layout.prompt.height(), 0);
    layout.window.bottom += growth;
    layout.prompt.bottom += growth;
    moveDown(layout.list, growth);
    moveDown(layout.ok, growth);
    moveDown(layout.cancel, growth);

    const int gap = layout.cancel.left - layout.ok.right;
    const int widest = (layout.list.width() - gap) / 2;
    const auto width = [&](const ui::Rectangle& button, int needed) {
        return std::max(button.width(), std::min(needed, widest));
    };
    const int okWidth = width(layout.ok, needs.okWidth);
    layout.cancel.left = layout.cancel.right - width(layout.cancel, needs.cancelWidth);
    layout.ok.right = layout.cancel.left - gap;
    layout.ok.left = layout.ok.right - okWidth;
    return layout;
}

}  // namespace kel::controls
