#pragma once
// Where the parts of the selector stand when its texts need more room than its template has.

#include "ui/model/placement.h"

namespace kel::controls {

// In pixels; the controls inside the client area, the window on the screen.
struct SelectorLayout {
    ui::Rectangle window;
    ui::Rectangle prompt;
    ui::Rectangle list;
    ui::Rectangle ok;
    ui::Rectangle cancel;
};

struct SelectorNeeds {
    int promptHeight = 0;
    int okWidth = 0;
    int cancelWidth = 0;
};

// A higher prompt pushes down what is below it; wider buttons grow to the left, each as far as half
// of the row.
SelectorLayout layOut(SelectorLayout designed, const SelectorNeeds& needs);

}  // namespace kel::controls
