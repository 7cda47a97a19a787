#pragma once
// The grammar of directive lines.

#include <optional>
#include <string_view>

#include "script/engine/parse.h"

namespace kel::script {

// A line that begins with one "#".
bool isDirectiveLine(std::string_view line);

// Reads a directive line. Returns the directive's name and leaves its parameters in `parse`.
std::optional<std::string_view> parseDirectiveLine(Parse& parse, std::string_view line);

// Reads the parameters in `parse` as the condition of an #IF or #ELSEIF.
std::optional<Comparison> parseComparison(Parse& parse, std::string_view line,
                                          std::string_view keyword);

}  // namespace kel::script
