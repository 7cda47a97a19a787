#pragma once
// The grammar of expressions and of the names in them.

#include <optional>
#include <string_view>

#include "script/engine/parse.h"

namespace kel::script {

struct ParsedExpression {
    Expression expression;
    std::string_view rest;  // the text after the expression's end
};

// Reads one expression from the start of `text`.
std::optional<ParsedExpression> parseExpression(Parse& parse, std::string_view text);

// Reads an expression that has `text` for itself, and adds it to the program.
std::optional<ExpressionIndex> parseWholeExpression(Parse& parse, std::string_view text);

// Reads the name after a "%" at the start of `text`.
std::optional<std::string_view> parseReferenceName(Parse& parse, std::string_view text);

// A literal when the text is quoted, empty or begins with a digit, else a variable.
Operand classifyOperand(const Parse& parse, std::string_view text);

}  // namespace kel::script
