#pragma once
// The command line of keldesk. Texts are UTF-8.

#include <span>
#include <string>

#include "hosts/shared/model/target.h"

namespace kel::keldesk {

struct DeskOptions {
    host::Target target;  // connected to at once, where it names something
    std::string link = "BenchLink.Communicator";
    std::string script;  // run at once; empty for none
};

// Throws host::Failure (usage).
DeskOptions parseDeskOptions(std::span<const std::string> arguments);

// For a title: "COM3", "localhost:4000"; empty for none.
std::string nameOf(const host::Target& target);

}  // namespace kel::keldesk
