#include "hosts/shared/console_program.h"

#include <exception>

#include "com/text.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/library_search.h"

namespace kel::host {

int runConsoleProgram(
    const char* name, int count, wchar_t** arguments,
    const std::function<ExitCode(const std::vector<std::string>&, ConsoleOutput&)>& program) {
    leaveOutCurrentFolder();
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i)
        texts.push_back(com::narrow(arguments[i], CP_UTF8));

    ConsoleOutput errors(STD_ERROR_HANDLE);
    const auto report = [&](ExitCode code, const std::string& text) {
        errors.write(std::string(name) + ": " + text + "\n");
        return static_cast<int>(code);
    };
    try {
        return static_cast<int>(program(texts, errors));
    } catch (const Failure& failure) {
        return report(failure.code(), failure.what());
    } catch (const com::Error& error) {
        return report(ExitCode::kFailed, describe(error));
    } catch (const std::exception& error) {
        return report(ExitCode::kFailed, error.what());
    }
}

}  // namespace kel::host
