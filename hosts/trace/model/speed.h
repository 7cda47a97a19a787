#pragma once
// How long a replay takes for what a recording took.

#include <cmath>

namespace kel::trace {

// A speed is a factor: 1 as recorded, 10 ten times faster; 0 and infinity mean at once.
inline bool isSpeed(double speed) {
    return speed >= 0;  // not a number is no speed
}

// Milliseconds that a recorded duration lasts at a speed.
inline double atSpeed(double recorded, double speed) {
    if (speed == 0 || std::isinf(speed) || !(recorded > 0)) return 0;
    return recorded / speed;
}

}  // namespace kel::trace
