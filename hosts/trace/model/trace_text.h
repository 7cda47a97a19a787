#pragma once
// The trace file as a whole: a header line, then events.

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/trace/model/event.h"

namespace kel::trace {

// The first line of a file, without its end. `started` tells when, for people.
std::string headerLine(std::string_view started);

// The events of a file. What follows the last line end is what a crash cut off, and is left out.
// Throws std::invalid_argument, with the number of the line, for anything else that is no trace of
// this version.
std::vector<Event> readTrace(std::string_view text);

}  // namespace kel::trace
