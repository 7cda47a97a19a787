#pragma once

#include <string>
#include <string_view>

#include "bench/instrument/commands.h"
#include "bench/instrument/device.h"
#include "bench/instrument/text.h"

namespace kel::bench {

// Answers must hold neither "OK" nor '>' by chance: hosts wait for these.
inline constexpr char kDone[] = "OK";

// A command on its way, with what follows its name.
struct Call {
    Device& device;
    std::string_view arguments;
    Duration now;
};

inline std::string_view requiredWord(std::string_view& arguments, const char* what) {
    const auto word = takeWord(arguments);
    if (word.empty()) throw CommandError(std::string("missing ") + what);
    return word;
}

// Shows a value, or takes a new one after the word "set".
Answer showOrSet(Call& call, const std::string& shown, auto&& set) {
    if (call.arguments.empty()) return {shown};
    if (!equalIgnoringCase(takeWord(call.arguments), "set")) throw CommandError("set expected");
    set();
    return {kDone};
}

}  // namespace kel::bench
