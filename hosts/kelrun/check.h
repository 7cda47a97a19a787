#pragma once
// What is found in a script before it runs, shown as compilers do.

#include <vector>

#include "hosts/kelrun/model/options.h"
#include "hosts/kelrun/preprocessor.h"
#include "hosts/shared/console_output.h"
#include "hosts/shared/model/diagnostic.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/script_file.h"

namespace kel::kelrun {

// All that the check finds, on standard output. Tells on `errors` when it could not be shown.
// Throws com::Error.
ExitCode showCheck(const Options& options, const ScriptFile& script,
                   const Preprocessor& preprocessor, ConsoleOutput& errors);

// Shows the errors, not the warnings, on standard error, and gives them. Throws com::Error.
std::vector<Diagnostic> showErrors(const ScriptFile& script, const Preprocessor& preprocessor,
                                   ConsoleOutput& errors);

}  // namespace kel::kelrun
