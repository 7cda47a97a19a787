#pragma once
// Which rows of a list are in view.

namespace kel::ui {

struct Scrolling {
    int rows = 0;
    int visible = 0;
    int first = 0;  // the uppermost one in view

    // The nearest position to a wanted one that leaves no room empty.
    int to(int wanted) const;

    // The nearest position that shows a row.
    int showing(int row) const;
};

}  // namespace kel::ui
