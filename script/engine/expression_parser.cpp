#include "script/engine/expression_parser.h"

#include <string>

namespace kel::script {
namespace {

constexpr std::size_t kMaximumReferenceLength = 128;

struct ParsedValue {
    std::variant<Operand, Call> value;
    std::string_view rest;
};

bool isQuoted(std::string_view text) {
    return text.size() >= 2 && text.front() == text.back() &&
           (text.front() == '"' || text.front() == '\'');
}

std::string_view withoutQuotes(std::string_view text) {
    return isQuoted(text) ? text.substr(1, text.size() - 2) : text;
}

std::string_view upTo(std::string_view text, std::size_t begin, std::size_t end) {
    return text.substr(begin, end - begin);
}

// call := [ name ] "(" [ parameter { "," parameter } ] ")"
// parameter := { blank } operand { blank }
//
// Outside quotes a parameter holds only letters, digits, blanks, underscores and full stops. `open`
// is the place of the opening mark. Calls do not nest.
std::optional<ParsedValue> parseCall(Parse& parse, std::string_view text, std::size_t open) {
    const Characters& characters = parse.characters;
    auto& operands = parse.program.operands;
    Call call{parse.program.piece(withoutQuotes(characters.trim(text.substr(0, open)))),
              {operands.size(), 0}};

    std::size_t begin = open + 1;
    std::optional<std::size_t> quote;
    for (std::size_t i = begin; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            quote = quote ? std::nullopt : std::optional(i);
        } else if (quote) {
            continue;
        } else if (c == ',' || c == ')') {
            const std::string_view parameter = characters.trim(upTo(text, begin, i));
            const bool isCallOfNothing =
                c == ')' && call.parameters.count == 0 && parameter.empty();
            if (!isCallOfNothing) {
                operands.push_back(classifyOperand(parse, parameter));
                ++call.parameters.count;
            }
            if (c == ')') return ParsedValue{call, text.substr(i + 1)};
            begin = i + 1;
        } else if (!characters.isName(c) && !characters.isBlank(c) && c != '.') {
            return parse.fail(&text[i], "Invalid parameter name");
        }
    }
    if (quote) return parse.fail(&text[*quote], "Unterminated string");
    return parse.fail(&text[open], "Syntax error ')'");
}

// value := call | operand
//
// The first "(" outside quotes makes it a call. An operand takes the whole text and holds, outside
// quotes, only letters, digits and underscores.
std::optional<ParsedValue> parseValue(Parse& parse, std::string_view text) {
    std::optional<std::size_t> quote;
    std::optional<std::size_t> stranger;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            quote = quote ? std::nullopt : std::optional(i);
        } else if (quote) {
            continue;
        } else if (c == '(') {
            return parseCall(parse, text, i);
        } else if (!stranger && !parse.characters.isName(c)) {
            stranger = i;
        }
    }
    if (quote) return parse.fail(&text[*quote], "Unterminated string");
    if (stranger) return parse.fail(&text[*stranger], "Invalid function name:", text);
    return ParsedValue{classifyOperand(parse, text), text.substr(text.size())};
}

}  // namespace

// operand := '"' text '"' | "'" text "'" | digit text | nothing | name
Operand classifyOperand(const Parse& parse, std::string_view text) {
    const Piece piece = parse.program.piece(withoutQuotes(text));
    if (isQuoted(text) || text.empty() || parse.characters.isDigit(text.front()))
        return Literal{piece};
    return Reference{piece};
}

// expression := [ target "=" ] value          target := { letter | digit | "_" }
//
// Only the characters before the first "=" or "(" decide; a blank there is refused.
std::optional<ParsedExpression> parseExpression(Parse& parse, std::string_view text) {
    std::optional<std::string_view> target;
    for (std::size_t i = 0; i < text.size() && text[i] != '('; ++i) {
        if (text[i] == '=') {
            target = text.substr(0, i);
            break;
        }
        if (!parse.characters.isName(text[i])) {
            return parse.fail(&text[i], std::string("Invalid expression '").append(text) + "'");
        }
    }
    const std::string_view valueText = target ? text.substr(target->size() + 1) : text;
    const auto value = parseValue(parse, valueText);
    if (!value) return std::nullopt;
    Expression expression{std::nullopt, value->value};
    if (target) expression.target = parse.program.piece(*target);
    return ParsedExpression{expression, value->rest};
}

std::optional<ExpressionIndex> parseWholeExpression(Parse& parse, std::string_view text) {
    const auto parsed = parseExpression(parse, text);
    if (!parsed) return std::nullopt;
    const std::string_view ignored = parse.characters.trim(parsed->rest);
    if (!ignored.empty()) parse.listener.textIgnored(ignored);
    parse.program.expressions.push_back(parsed->expression);
    return ExpressionIndex{parse.program.expressions.size() - 1};
}

// reference := "%" { letter | digit | "_" }          at most 128 of them
std::optional<std::string_view> parseReferenceName(Parse& parse, std::string_view text) {
    std::size_t size = 0;
    while (size < text.size() && parse.characters.isName(text[size])) {
        if (size == kMaximumReferenceLength) {
            return parse.fail(text.data(), "Too long variable name:", text);
        }
        ++size;
    }
    return text.substr(0, size);
}

}  // namespace kel::script
