#include "script/engine/directive_parser.h"

#include <algorithm>
#include <string>

#include "script/engine/expression_parser.h"

namespace kel::script {
namespace {

constexpr std::string_view kMarks = "\"'(),";

// separator := { blank } [ "," { blank } ]
std::string_view skipSeparator(const Characters& characters, std::string_view text) {
    const auto skipBlanks = [&] {
        while (!text.empty() && characters.isBlank(text.front()))
            text.remove_prefix(1);
    };
    skipBlanks();
    if (!text.empty() && text.front() == ',') text.remove_prefix(1);
    skipBlanks();
    return text;
}

// string := '"' { any but '"' } '"' | "'" { any but "'" } "'"
std::optional<std::string_view> parseString(Parse& parse, std::string_view text) {
    const std::size_t end = text.find(text.front(), 1);
    if (end == std::string_view::npos) return parse.fail(text.data(), "Unterminated string");
    parse.parameters.push_back(Literal{parse.program.piece(text.substr(1, end - 1))});
    return text.substr(end + 1);
}

// parenthesised := "(" expression ")"
//
// The mark that closes is the one that matches; those in double quotes do not count.
std::optional<std::string_view> parseParenthesised(Parse& parse, std::string_view text) {
    std::size_t depth = 0;
    std::optional<std::size_t> quote;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') {
            quote = quote ? std::nullopt : std::optional(i);
        } else if (quote) {
            continue;
        } else if (text[i] == '(') {
            ++depth;
        } else if (text[i] == ')' && --depth == 0) {
            const auto expression = parseWholeExpression(parse, text.substr(1, i - 1));
            if (!expression) return std::nullopt;
            parse.parameters.push_back(*expression);
            return text.substr(i + 1);
        }
    }
    if (quote) return parse.fail(&text[*quote], "Unterminated string");
    return parse.fail(text.data(), "Syntax error ')'");
}

// word := { any but blank, comma, quote, parenthesis }
//
// A word is a reference when it begins with "%", and a literal when it is empty or begins with a
// digit.
std::optional<std::string_view> parseWord(Parse& parse, std::string_view text) {
    const Characters& characters = parse.characters;
    const auto end = std::find_if(text.begin(), text.end(), [&](char c) {
        return characters.isBlank(c) || kMarks.find(c) != std::string_view::npos;
    });
    const std::string_view word = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    const Piece piece = parse.program.piece(word);
    if (word.empty() || characters.isDigit(word.front())) {
        parse.parameters.push_back(Literal{piece});
    } else if (word.front() == '%') {
        if (!parseReferenceName(parse, text.substr(1))) return std::nullopt;
        parse.parameters.push_back(Reference{parse.program.piece(word.substr(1))});
    } else {
        parse.parameters.push_back(Word{piece});
    }
    return text.substr(word.size());
}

// parameter := string | parenthesised | word
//
// Adds the parameter and returns the text after it.
std::optional<std::string_view> parseParameter(Parse& parse, std::string_view text) {
    switch (text.front()) {
        case '"':
        case '\'':
            return parseString(parse, text);
        case '(':
            return parseParenthesised(parse, text);
        case ')':
            return parse.fail(text.data(), "Syntax error ')'");
        default:
            return parseWord(parse, text);
    }
}

// comparand := string | word
std::optional<Operand> toComparand(const Parameter& parameter) {
    if (const auto* literal = std::get_if<Literal>(&parameter)) return *literal;
    if (const auto* reference = std::get_if<Reference>(&parameter)) return *reference;
    if (const auto* word = std::get_if<Word>(&parameter)) return Reference{word->text};
    return std::nullopt;
}

}  // namespace

bool isDirectiveLine(std::string_view line) {
    return !line.empty() && line.front() == '#' && line.substr(0, 2) != "##";
}

// directive-line := "#" name [ separator ] { parameter [ separator ] }
// name := { any but blank, comma, parenthesis }
//
// Two commas in a row enclose an empty word.
std::optional<std::string_view> parseDirectiveLine(Parse& parse, std::string_view line) {
    const Characters& characters = parse.characters;
    const auto nameEnd = std::find_if(line.begin() + 1, line.end(), [&](char c) {
        return characters.isBlank(c) || c == ',' || c == '(' || c == ')';
    });
    const auto size = static_cast<std::size_t>(nameEnd - line.begin());
    const std::string_view name = line.substr(1, size - 1);

    parse.parameters.clear();
    std::string_view rest = skipSeparator(characters, line.substr(size));
    while (!rest.empty()) {
        const auto afterParameter = parseParameter(parse, rest);
        if (!afterParameter) return std::nullopt;
        rest = skipSeparator(characters, *afterParameter);
    }
    return name;
}

// comparison := comparand ( "==" | "!=" ) comparand
std::optional<Comparison> parseComparison(Parse& parse, std::string_view line,
                                          std::string_view keyword) {
    const auto& parameters = parse.parameters;
    if (parameters.size() == 3) {
        const auto left = toComparand(parameters[0]);
        const auto* sign = std::get_if<Word>(&parameters[1]);
        const auto right = toComparand(parameters[2]);
        const std::string_view mark =
            sign != nullptr ? parse.program.view(sign->text) : std::string_view();
        if (left && right && (mark == "==" || mark == "!=")) {
            return Comparison{*left, *right, mark == "=="};
        }
    }
    return parse.fail(line.data(), "Invalid syntax in #" + std::string(keyword) + " statement");
}

}  // namespace kel::script
