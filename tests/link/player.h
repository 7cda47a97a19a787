#pragma once
// Plays a rule on a link.

#include "tests/link/kit.h"
#include "tests/support/cases.h"

namespace kel::conformance {

// A rule as rules.txt has it.
struct Rule {
    std::string name;
    std::string subject;                // "stream", "serial", "network" or "link"
    std::string wire;                   // "closed", "connected" or "echoing"
    std::vector<std::string> variants;  // in the place of the star, one after the other
    test::Case lines;
};

// All of them, built into the program.
const std::vector<Rule>& rules();

// Throws Mend or NotTried.
void play(const Rule& rule, const Link& link);

}  // namespace kel::conformance
