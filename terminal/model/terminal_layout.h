#pragma once
// Where the parts of the terminal stand.

#include "ui/model/placement.h"

namespace kel::terminal {

struct TerminalLayout {
    ui::Rectangle output;
    ui::Rectangle searchBar;
    ui::Rectangle commandLine;
};

// From top to bottom, each over the whole width, in pixels. A part of no height is not shown. The
// command line keeps its room longest; nothing ever stands outside the window.
TerminalLayout layOut(int width, int height, int searchBarHeight, int commandLineHeight);

}  // namespace kel::terminal
