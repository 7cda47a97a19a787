// kelregister: registers libraries of components for one user.
#include <windows.h>

#include "com/text.h"
#include "hosts/kelregister/model/register_options.h"
#include "hosts/kelregister/server_library.h"
#include "hosts/kelregister/user_classes.h"
#include "hosts/shared/console_program.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/full_path.h"
#include "hosts/shared/ole.h"
#include "hosts/shared/program_folder.h"

namespace {

using namespace kel;
using namespace kel::kelregister;
using host::ConsoleOutput;
using host::ExitCode;

constexpr wchar_t kDefaultLibrary[] = L"KelUtils.dll";

std::vector<std::wstring> libraryPaths(const RegisterOptions& options) {
    if (options.libraries.empty()) return {host::programFolder() + kDefaultLibrary};
    std::vector<std::wstring> paths;
    for (const std::string& name : options.libraries)
        paths.push_back(host::fullPath(com::widen(name, CP_UTF8)));
    return paths;
}

void change(const std::wstring& path, bool unregister) {
    const ServerLibrary library(path);
    const UserClasses classes;
    if (!unregister) return library.registerClasses();
    library.unregisterClasses();
    classes.removeEmptyRoots();
}

// Tells of each library; the first failure is the program's.
ExitCode changeAll(const RegisterOptions& options, ConsoleOutput& errors) {
    const host::Ole ole;
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    ExitCode first = ExitCode::kRan;
    bool hasRegistered = false;
    const auto fail = [&](ExitCode code, const std::string& reason) {
        errors.write("kelregister: " + reason + "\n");
        if (first == ExitCode::kRan) first = code;
    };
    for (const std::wstring& path : libraryPaths(options)) {
        try {
            change(path, options.unregister);
            hasRegistered |= !options.unregister;
            output.write(com::narrow(std::wstring_view(path), CP_UTF8) +
                         (options.unregister ? " is no longer registered for this user\n"
                                             : " is registered for this user\n"));
        } catch (const host::Failure& failure) {
            fail(failure.code(), failure.what());
        } catch (const com::Error& error) {
            fail(ExitCode::kFailed,
                 com::narrow(std::wstring_view(path), CP_UTF8) + ": " + host::describe(error));
        }
    }
    if (hasRegistered && !systemReadsUserClasses()) {
        errors.write(
            "kelregister: this system does not look for the components of a user (older versions "
            "of Wine do not): programs will not find them; regsvr32 registers for all users\n");
    }
    return first;
}

ExitCode runProgram(const std::vector<std::string>& arguments, ConsoleOutput& errors) {
    const RegisterOptions options = parseRegisterOptions(arguments);
    if (!options.help && !options.version) return changeAll(options, errors);
    ConsoleOutput(STD_OUTPUT_HANDLE)
        .write(options.help ? registerHelpText() : "kelregister " KEL_VERSION "\n");
    return ExitCode::kRan;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    return host::runConsoleProgram("kelregister", count, arguments, runProgram);
}
