#pragma once
// The unit in which containers measure: hundredths of a millimetre.

#include <windows.h>

namespace kel::ole {

// Between pixels of the screen and hundredths of a millimetre, rounded to the nearest.
SIZE toHimetric(SIZE pixels);
SIZE toPixels(SIZE himetric);

}  // namespace kel::ole
