#pragma once
// What helps against the mistakes that newcomers to the script language make.

#include <string>
#include <string_view>

namespace kel::host {

// How the line of a script that a message is about should be written; empty unless that is sure to
// help. Texts are UTF-8.
std::string hint(std::string_view message, std::string_view line);

}  // namespace kel::host
