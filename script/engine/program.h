#pragma once
// A parsed script: small values that refer to the script's text.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <variant>

#include "script/engine/pool.h"

namespace kel::script {

// Places and lengths take four bytes each: what stands for a long script is as long again as its
// text, and fresh memory is dear.
using Small = std::uint32_t;

// A piece of the script's text.
struct Piece {
    Small begin = 0;
    Small size = 0;
};

// Consecutive elements of one of the program's pools.
struct Range {
    Small first = 0;
    Small count = 0;
};

// A text that stands for itself.
struct Literal {
    Piece text;
};

// The value of a variable, which must exist.
struct Reference {
    Piece name;
};

// A bare word of a directive line: the value of the variable of that name, else the word.
struct Word {
    Piece text;
};

// An element of the program's expressions.
struct ExpressionIndex {
    Small index = 0;
};

using Operand = std::variant<Literal, Reference>;

struct Call {
    Piece name;        // empty: "input"
    Range parameters;  // operands
};

struct Expression {
    std::optional<Piece> target;  // the variable that receives the value
    std::variant<Operand, Call> value;
};

using Segment = std::variant<Literal, Reference, ExpressionIndex>;
using Parameter = std::variant<Literal, Reference, Word, ExpressionIndex>;

struct Directive {
    Piece name;
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

// The kinds of records. What is larger than a piece stands in a pool, so that the many plain
// lines of a long script stay small.

// A line to be sent as it stands.
struct PlainText {
    Piece text;
};

// A line to be sent, with something to be put in.
struct ComposedText {
    Range segments;
};

// A line that is evaluated and not sent.
struct Evaluation {
    Small expression = 0;
};

struct DirectiveCall {
    Small directive = 0;
};

struct Conditional {
    ConditionalKind kind = ConditionalKind::If;
    Small comparison = 0;  // of If and ElseIf
};

struct DialogBlock {
    Small dialog = 0;
};

struct Record {
    Small start = 0;  // of the line
    std::variant<PlainText, ComposedText, Evaluation, DirectiveCall, Conditional, DialogBlock> work;
};

// Refers to the script's text, which must outlive the program.
class Program {
public:
    // Throws when the text is too long to have its places told.
    explicit Program(std::string_view text) : text_(text) {
        if (text.size() > std::numeric_limits<Small>::max()) {
            throw std::length_error("The script is too long");
        }
    }

    std::string_view view(Piece piece) const { return text_.substr(piece.begin, piece.size); }
    std::optional<std::string_view> target(const Expression& expression) const {
        if (!expression.target) return std::nullopt;
        return view(*expression.target);
    }
    const char* at(Small place) const { return text_.data() + place; }
    Small place(const char* where) const { return static_cast<Small>(where - text_.data()); }
    Piece piece(std::string_view view) const {
        return {place(view.data()), static_cast<Small>(view.size())};
    }

    Pool<Record> records;
    Pool<Segment> segments;
    Pool<Expression> expressions;
    Pool<Operand> operands;
    Pool<Directive> directives;
    Pool<Parameter> parameters;
    Pool<Comparison> comparisons;
    Pool<Dialog> dialogs;

private:
    std::string_view text_;
};

}  // namespace kel::script
