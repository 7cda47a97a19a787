#pragma once
// Plays a rule on a link.

#include "hosts/conformance/kit.h"
#include "hosts/conformance/rules.h"

namespace kel::conformance {

// Throws Mend or NotTried.
void play(const Rule& rule, const Link& link);

}  // namespace kel::conformance
