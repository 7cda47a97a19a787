#pragma once
// A text with a name.

#include <string>

namespace kel::host {

// A variable, or the answer to a question.
struct NamedText {
    std::string name;
    std::string value;
};

}  // namespace kel::host
