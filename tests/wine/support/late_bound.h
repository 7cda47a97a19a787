#pragma once
// Calls as script languages make them, and what they show.

#include <string>

#include "hosts/conformance/call_line.h"

namespace kel::test {

using conformance::invoke;
using conformance::Outcome;
using conformance::show;

// Gives what a call shows: its result and those of "out", or the code and the description of its
// failure.
std::string call(IDispatch* object, const std::string& line);

// The result and those of "out", or the code and the description of the failure.
std::string show(const Outcome& outcome);

}  // namespace kel::test
