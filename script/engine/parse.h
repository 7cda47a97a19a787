#pragma once
// What the grammar rules share.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "script/engine/program.h"
#include "script/engine/text_rules.h"

namespace kel::script {

struct SyntaxError {
    const char* where = nullptr;  // in the script's text
    std::string message;
    std::optional<std::string_view> part;  // the offending text, where the message names one
};

// Learns what is met while a script is parsed.
class ParseListener {
public:
    virtual ~ParseListener() = default;

    // A directive line cannot be read and is left out of the program.
    virtual void lineSkipped(const SyntaxError& error) = 0;

    // Nothing of the script may run. Returns whether to look for more errors.
    virtual bool failed(const SyntaxError& error) = 0;

    // Text after the end of an expression, which has no effect.
    virtual void textIgnored(std::string_view text) = 0;
};

// One function per grammar rule takes a `Parse`, adds to the program, and returns nothing when
// the text does not follow the rule; `error` then tells why.
struct Parse {
    const Characters& characters;
    Program& program;
    ParseListener& listener;
    SyntaxError error;
    std::vector<Parameter> parameters;  // of the directive line that is being read

    std::nullopt_t fail(const char* where, std::string message,
                        std::optional<std::string_view> part = std::nullopt) {
        error = {where, std::move(message), part};
        return std::nullopt;
    }
};

}  // namespace kel::script
