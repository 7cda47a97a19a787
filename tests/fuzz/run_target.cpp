#include <algorithm>

#include "tests/fuzz/any_host.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {

void runAnything(std::string_view input) {
    const std::size_t end = std::min(input.find('\0'), input.size());
    const std::string_view choices = input.substr(std::min(end + 1, input.size()));
    const DoubleByteRules rules;
    script::VariableStore variables(rules);
    AnyHost host(input.substr(0, end), variables, rules);
    const std::string first = host.drive(choices);
    require(host.drive(choices) == first, "whatever happened, the next run is as the first");
}

}  // namespace kel::fuzz
