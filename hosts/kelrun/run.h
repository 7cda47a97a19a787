#pragma once
// One run of the program, from its options to its exit code.

#include "hosts/kelrun/model/options.h"
#include "hosts/shared/console_output.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {

// Runs the script, and says on `errors` how it ended. Throws Failure, com::Error.
ExitCode run(const Options& options, ConsoleOutput& errors);

}  // namespace kel::kelrun
