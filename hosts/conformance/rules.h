#pragma once
// The rules that links are to keep.

#include <string>
#include <vector>

#include "hosts/conformance/model/cases.h"

namespace kel::conformance {

// A rule as rules.txt has it.
struct Rule {
    std::string name;
    std::string subject;                // "stream", "serial", "network" or "link"
    std::string wire;                   // "closed", "connected" or "echoing"
    std::vector<std::string> variants;  // in the place of the star, one after the other
    Case lines;
};

// All of them, built into the program.
const std::vector<Rule>& rules();

}  // namespace kel::conformance
