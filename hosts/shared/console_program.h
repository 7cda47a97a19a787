#pragma once
// What the programs of the command line do alike.

#include <functional>
#include <string>
#include <vector>

#include "hosts/shared/console_output.h"
#include "hosts/shared/model/failure.h"

namespace kel::host {

// Runs a program on its arguments (UTF-8, its own name left out) and on standard error, where it
// tells how it failed, with the program's name before it. Gives the exit code.
int runConsoleProgram(
    const char* name, int count, wchar_t** arguments,
    const std::function<ExitCode(const std::vector<std::string>&, ConsoleOutput&)>& program);

}  // namespace kel::host
