#pragma once
// Checks a link by the rules.

#include <functional>
#include <string>

#include "hosts/conformance/player.h"

namespace kel::conformance {

// What became of a rule; the text says what is to be mended or why it was not tried.
struct Verdict {
    enum class Kind { kKept, kToMend, kNotTried };

    Kind kind;
    std::string text;
};

Verdict check(const Rule& rule, const Link& link);

// Checks all rules on all streams that were named, at the end that no object is left. Prints the
// name of each before it is tried, then its verdict. Gives the number of rules to be mended.
int checkAll(const Setup& setup, const std::function<void(const std::string&)>& print);

}  // namespace kel::conformance
