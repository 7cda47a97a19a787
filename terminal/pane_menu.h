#pragma once
// The context menu of the output pane.

#include <windows.h>

namespace kel::terminal {

enum class PaneCommand { None, Copy, SelectAll, Clear };

// Shows it at a place of the screen until the user has chosen.
PaneCommand askPaneMenu(HWND owner, POINT place, bool hasSelection, bool hasText);

}  // namespace kel::terminal
