#pragma once
// One thing to tell about a script, with its place.

#include <cstddef>
#include <string>

namespace kel::script {

enum class Severity { Error, Warning };

struct Diagnostic {
    std::string script;      // the name given to the run or check
    std::size_t line = 0;    // from 1; 0 when the place is unknown
    std::size_t column = 0;  // in bytes of the line as written, from 1
    Severity severity = Severity::Error;
    std::string message;
};

}  // namespace kel::script
