#include "script/engine/text_line_parser.h"

#include "script/engine/expression_parser.h"

namespace kel::script {
namespace {

// evaluation := "@" expression
std::optional<Record> parseEvaluation(Parse& parse, std::string_view line) {
    const auto expression = parseWholeExpression(parse, line.substr(1));
    if (!expression) return std::nullopt;
    return Record{parse.program.place(line.data()), Evaluation{expression->index}};
}

// inline-expression := "##" expression
//
// Adds it and returns the text after it.
std::optional<std::string_view> parseInlineExpression(Parse& parse, std::string_view text) {
    const auto parsed = parseExpression(parse, text.substr(2));
    if (!parsed) return std::nullopt;
    parse.program.segments.push_back(ExpressionIndex{parse.program.expressions.size()});
    parse.program.expressions.push_back(parsed->expression);
    return parsed->rest;
}

// reference := "%" name
//
// Adds it and returns the text after it.
std::optional<std::string_view> parseReference(Parse& parse, std::string_view text) {
    const auto name = parseReferenceName(parse, text.substr(1));
    if (!name) return std::nullopt;
    parse.program.segments.push_back(Reference{parse.program.piece(*name)});
    return text.substr(1 + name->size());
}

// sent-line := { quoted | reference | inline-expression | other }
// quoted := '"' { any but '"' } [ '"' ]
//
// Quotes stay in the text. The marks looked for are never the second half of a two-byte character.
std::optional<Record> parseSentLine(Parse& parse, std::string_view line) {
    Program& program = parse.program;
    auto& segments = program.segments;
    const Small first = segments.size();
    std::string_view rest = line;
    std::size_t literalSize = 0;
    const auto addLiteral = [&] {
        if (literalSize != 0)
            segments.push_back(Literal{program.piece(rest.substr(0, literalSize))});
    };

    bool isInQuotes = false;
    while (true) {
        literalSize = parse.characters.findMark(rest, literalSize);
        if (literalSize == rest.size()) break;
        const char c = rest[literalSize];
        const bool isReference = !isInQuotes && c == '%';
        const bool isExpression = !isInQuotes && c == '#' && rest.substr(literalSize, 2) == "##";
        if (!isReference && !isExpression) {
            if (c == '"') isInQuotes = !isInQuotes;
            ++literalSize;
            continue;
        }
        addLiteral();
        const std::string_view here = rest.substr(literalSize);
        const auto next =
            isReference ? parseReference(parse, here) : parseInlineExpression(parse, here);
        if (!next) return std::nullopt;
        rest = *next;
        literalSize = 0;
    }
    const Small start = program.place(line.data());
    if (segments.size() == first) return Record{start, PlainText{program.piece(line)}};
    addLiteral();
    return Record{start, ComposedText{{first, segments.size() - first}}};
}

}  // namespace

// text-line := evaluation | sent-line
std::optional<Record> parseTextLine(Parse& parse, std::string_view line) {
    const bool isEvaluation = !line.empty() && line.front() == '@';
    return isEvaluation ? parseEvaluation(parse, line) : parseSentLine(parse, line);
}

}  // namespace kel::script
