#include "hosts/kelregister/model/register_options.h"

#include "hosts/shared/model/failure.h"

namespace kel::kelregister {
namespace {

[[noreturn]] void refuse(const std::string& text) {
    throw host::Failure(host::ExitCode::kUsage, text + " (--help shows the options)");
}

}  // namespace

RegisterOptions parseRegisterOptions(std::span<const std::string> arguments) {
    RegisterOptions options;
    bool onlyOperands = false;
    for (const std::string& argument : arguments) {
        if (onlyOperands || argument.size() < 2 || argument.front() != '-') {
            if (argument.empty()) refuse("the name of a library is empty");
            options.libraries.push_back(argument);
        } else if (argument == "--") {
            onlyOperands = true;
        } else if (argument == "--unregister") {
            options.unregister = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else {
            refuse("there is no option " + argument);
        }
    }
    return options;
}

std::string registerHelpText() {
    return "usage: kelregister [--unregister] [FILE.dll ...]\n"
           "Makes the components of libraries known to the programs of this user, without\n"
           "the rights of an administrator. Without a FILE: KelUtils.dll beside kelregister.\n"
           "  --unregister  takes the registration of this user back\n"
           "  --help        this text\n"
           "  --version     the version\n"
           "Exit codes: 0 all is done, 1 a library refused, 2 wrong usage, or a file that is\n"
           "no such library; the other files are registered all the same.\n";
}

}  // namespace kel::kelregister
