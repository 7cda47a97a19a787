#pragma once
// What a check or a run has found, in the words of compilers.

#include <cstddef>
#include <span>
#include <string>

namespace kel::host {

// Texts are UTF-8.
struct Diagnostic {
    std::string file;
    std::size_t line = 0;    // from 1; 0 when the place is unknown
    std::size_t column = 0;  // in bytes of the user's code page, from 1; 0 when it is unknown
    bool isError = true;     // or else a warning
    std::string message;
};

// "file:line:column: message", with as much of the place as is known.
std::string placeAndMessage(const Diagnostic& diagnostic);

// "file:line:column: error: message", or a warning in the same form.
std::string compilerText(const Diagnostic& diagnostic);

// An array of objects, one a line.
std::string toJson(std::span<const Diagnostic> diagnostics);

}  // namespace kel::host
