// kelrun: runs an instrument command script on a connected instrument.
#include <windows.h>

#include <exception>
#include <string>
#include <vector>

#include "com/text.h"
#include "hosts/kelrun/run.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/library_search.h"

namespace {

using namespace kel;
using namespace kel::kelrun;

ExitCode runProgram(const std::vector<std::string>& arguments, ConsoleOutput& errors) {
    const Options options = parseOptions(arguments);
    if (!options.help && !options.version) return run(options, errors);
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    output.write(options.help ? helpText() : "kelrun " KEL_VERSION "\n");
    return ExitCode::kRan;
}

ExitCode runReportingFailure(const std::vector<std::string>& arguments) {
    ConsoleOutput errors(STD_ERROR_HANDLE);
    const auto report = [&](ExitCode code, const std::string& text) {
        errors.write("kelrun: " + text + "\n");
        return code;
    };
    try {
        return runProgram(arguments, errors);
    } catch (const Failure& failure) {
        return report(failure.code(), failure.what());
    } catch (const com::Error& error) {
        return report(ExitCode::kScriptFailed, describe(error));
    } catch (const std::exception& error) {
        return report(ExitCode::kScriptFailed, error.what());
    }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    leaveOutCurrentFolder();
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i)
        texts.push_back(com::narrow(arguments[i], CP_UTF8));
    return static_cast<int>(runReportingFailure(texts));
}
