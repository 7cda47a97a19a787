#pragma once
// Finds a script's mistakes without running it.

#include <string_view>
#include <vector>

#include "script/engine/diagnostic.h"
#include "script/engine/host.h"
#include "script/engine/text_rules.h"
#include "script/engine/variables.h"

namespace kel::script {

// Errors are what would be reported before the run or is sure to end it, warnings what is likely
// to be a mistake; all in the order of the text. The host is asked for installed words only.
// Variables that the store holds count as set.
std::vector<Diagnostic> checkScript(std::string_view text, std::string_view name,
                                    const TextRules& rules, const Characters& characters,
                                    const VariableStore& variables, Host& host);

}  // namespace kel::script
