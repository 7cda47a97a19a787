#pragma once
// The text that tells people where a replay left its recording.

#include <string>

#include "hosts/trace/model/event.h"

namespace kel::trace {

// A call as one would write it: serial1.WriteString("start", false, 0).
std::string describe(const Call& call);

// `expected` is null when no further call was recorded there; `actual` is null when the call that
// was expected did not come. `now` is where in the script the host is.
std::string describeDifference(const Call* expected, const Call* actual, const Position& now);

// The sink of an event gives back another value than it did.
std::string describeDifference(const EventFired& event, const EventAnswered& expected,
                               const EventAnswered& actual, const Position& now);

// A file cannot be left as it was.
std::string describeDifference(const FilePiece& piece, const std::string& reason,
                               const Position& now);

}  // namespace kel::trace
