#pragma once
// Sizes for the resolution of the screen.

#include <windows.h>

namespace kel::keldesk {

// Pixels of the screen for pixels at 96 dots per inch.
int scaled(int pixels);

// The same for a size, which becomes no larger than the work area.
SIZE scaledToFit(int width, int height);

// Where something of that size comes to stand, if possible at a wish: inside the work area.
POINT inWorkArea(POINT wish, SIZE size);

}  // namespace kel::keldesk
