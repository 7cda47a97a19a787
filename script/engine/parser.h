#pragma once
// From a script's lines to its records.

#include <string_view>

#include "script/engine/parse.h"

namespace kel::script {

// Adds the script to the program. False when nothing of it may run; the listener knows why.
bool parseScript(std::string_view text, const Characters& characters, Program& program,
                 ParseListener& listener);

}  // namespace kel::script
