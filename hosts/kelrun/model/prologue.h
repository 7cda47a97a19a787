#pragma once
// The variables of the command line, in the words of the script language.

#include <span>
#include <string>

#include "hosts/kelrun/model/options.h"

namespace kel::kelrun {

// A script (UTF-8) that sets the variables and does nothing else; empty when there are none.
// Throws Failure (usage) for a name or value that the language cannot write.
std::string prologue(std::span<const Variable> variables);

}  // namespace kel::kelrun
