// kelrun: runs an instrument command script on a connected instrument.
#include "hosts/kelrun/cancel.h"
#include "hosts/kelrun/diagnose.h"
#include "hosts/kelrun/run.h"
#include "hosts/shared/console_program.h"

namespace {

using namespace kel::kelrun;

ExitCode runProgram(const std::vector<std::string>& arguments, ConsoleOutput& errors) {
    endAtInterrupt();
    const Options options = parseOptions(arguments);
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    if (options.diagnose) return diagnose(options, output);
    if (!options.help && !options.version) return run(options, errors);
    output.write(options.help ? helpText() : "kelrun " KEL_VERSION "\n");
    return ExitCode::kRan;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    return runConsoleProgram("kelrun", count, arguments, runProgram);
}
