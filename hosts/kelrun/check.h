#pragma once
// What is found in a script before it runs, shown as compilers do.

#include <string>
#include <vector>

#include "hosts/kelrun/model/options.h"
#include "hosts/shared/console_output.h"
#include "hosts/shared/finding_writer.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {

// Shows all that was found on standard output. Tells on `errors` when it could not be shown.
ExitCode showCheck(const Options& options, const std::vector<Diagnostic>& found,
                   FindingWriter& writer, ConsoleOutput& errors);

// Shows the errors, not the warnings, on standard error; gives their number.
std::size_t showErrors(const std::vector<Diagnostic>& found, FindingWriter& writer,
                       ConsoleOutput& errors);

// Tells that there are warnings which a failed run may explain, unless what has ended it, `told`,
// is at the same places; nothing where there are none.
std::string tellOfWarnings(const std::vector<Diagnostic>& found,
                           const std::vector<Diagnostic>& told);

}  // namespace kel::kelrun
