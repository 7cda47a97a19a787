#pragma once
// How high the status window is, and where its button stands.

#include "ui/model/placement.h"

namespace kel::controls {

// As the template made them, in pixels: the whole window's height, and the controls inside the
// client area.
struct StatusDesign {
    int windowHeight = 0;
    ui::Rectangle bar;
    ui::Rectangle cancel;
};

struct StatusLayout {
    int windowHeight = 0;
    int cancelTop = 0;
    bool operator==(const StatusLayout&) const = default;
};

// A part that is not shown leaves its room to those below it.
StatusLayout layOut(const StatusDesign& design, bool showsBar, bool showsCancel);

}  // namespace kel::controls
