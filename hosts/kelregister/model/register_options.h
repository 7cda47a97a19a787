#pragma once
// The command line of kelregister. Texts are UTF-8.

#include <span>
#include <string>
#include <vector>

namespace kel::kelregister {

struct RegisterOptions {
    std::vector<std::string> libraries;  // none: the one beside the program
    bool unregister = false;
    bool help = false;     // nothing else counts
    bool version = false;  // nothing else counts
};

// Reads the arguments that follow the program's name. Throws host::Failure (usage).
RegisterOptions parseRegisterOptions(std::span<const std::string> arguments);

// What --help prints.
std::string registerHelpText();

}  // namespace kel::kelregister
