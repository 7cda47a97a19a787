#pragma once
// Looks whether everything is there that a run needs.

#include "hosts/kelrun/model/options.h"
#include "hosts/shared/console_output.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {

// Tells how library and link are registered, and which serial ports there are. Opens each port for
// a moment.
ExitCode diagnose(const Options& options, ConsoleOutput& output);

}  // namespace kel::kelrun
