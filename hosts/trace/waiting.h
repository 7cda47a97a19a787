#pragma once
// Waiting as the link once did, and the clock for it.

#include <functional>

namespace kel::trace {

// Milliseconds of a clock that never goes back.
double milliseconds();

// Waits until milliseconds() has reached `end` or `done` (which may be empty) is true. With
// `runsMessages` the messages that wait are dispatched, at least once; a program that is to end
// ends the wait. True when it was done.
bool waitUntil(double end, bool runsMessages, const std::function<bool()>& done);

}  // namespace kel::trace
