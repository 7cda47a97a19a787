#pragma once
// The grammar of lines that are sent to the instrument, and of lines that are only evaluated.

#include <optional>
#include <string_view>

#include "script/engine/parse.h"

namespace kel::script {

// Reads a line that is no directive.
std::optional<Record> parseTextLine(Parse& parse, std::string_view line);

}  // namespace kel::script
