#pragma once
// A parsed script: small values that refer to the script's text.

#include <cstddef>
#include <optional>
#include <string_view>
#include <variant>

#include "script/engine/pool.h"

namespace kel::script {

// Consecutive elements of one of the program's pools.
struct Range {
    std::size_t first = 0;
    std::size_t count = 0;
};

// A text that stands for itself.
struct Literal {
    std::string_view text;
};

// The value of a variable, which must exist.
struct Reference {
    std::string_view name;
};

// A bare word of a directive line: the value of the variable of that name, else the word.
struct Word {
    std::string_view text;
};

// An element of the program's expressions.
struct ExpressionIndex {
    std::size_t index = 0;
};

using Operand = std::variant<Literal, Reference>;

struct Call {
    std::string_view name;  // empty: "input"
    Range parameters;       // operands
};

struct Expression {
    std::optional<std::string_view> target;  // the variable that receives the value
    std::variant<Operand, Call> value;
};

using Segment = std::variant<Literal, Reference, ExpressionIndex>;
using Parameter = std::variant<Literal, Reference, Word, ExpressionIndex>;

struct Directive {
    std::string_view name;
    Range parameters;
};

enum class ConditionalKind { If, ElseIf, Else, EndIf };

struct Comparison {
    Operand left;
    Operand right;
    bool isEqual = true;  // "==" rather than "!="
};

struct Dialog {
    std::optional<Parameter> title;
    Range items;  // expressions
};

// The kinds of records. What is larger than two words stands in a pool, so that the many plain
// lines of a long script stay small.

// A line to be sent as it stands.
struct PlainText {
    std::string_view text;
};

// A line to be sent, with something to be put in.
struct ComposedText {
    Range segments;
};

// A line that is evaluated and not sent.
struct Evaluation {
    std::size_t expression = 0;
};

struct DirectiveCall {
    std::size_t directive = 0;
};

struct Conditional {
    ConditionalKind kind = ConditionalKind::If;
    std::size_t comparison = 0;  // of If and ElseIf
};

struct DialogBlock {
    std::size_t dialog = 0;
};

struct Record {
    const char* start;  // of the line, in the script's text
    std::variant<PlainText, ComposedText, Evaluation, DirectiveCall, Conditional, DialogBlock> work;
};

// Every view points into the script's text, which must outlive the program.
struct Program {
    Pool<Record> records;
    Pool<Segment> segments;
    Pool<Expression> expressions;
    Pool<Operand> operands;
    Pool<Directive> directives;
    Pool<Parameter> parameters;
    Pool<Comparison> comparisons;
    Pool<Dialog> dialogs;
};

}  // namespace kel::script
