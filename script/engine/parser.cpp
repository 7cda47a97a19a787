#include "script/engine/parser.h"

#include <optional>

#include "script/engine/directive_parser.h"
#include "script/engine/expression_parser.h"
#include "script/engine/lines.h"
#include "script/engine/text_line_parser.h"

namespace kel::script {
namespace {

class ScriptParser {
public:
    ScriptParser(std::string_view text, const Characters& characters, Program& program,
                 ParseListener& listener)
        : lines_(text, characters), parse_{characters, program, listener, {}, {}} {}

    bool parse();

private:
    void parseDirective(std::string_view line);
    void parseDialog(std::string_view line);
    void addConditional(std::string_view line, ConditionalKind kind, std::string_view keyword);
    void addDirectiveCall(std::string_view line, std::string_view name);
    void fail();

    LineReader lines_;
    Parse parse_;
    bool isFailed_ = false;
    bool isStopped_ = false;
};

// script := { directive-line | dialog-block | text-line }
bool ScriptParser::parse() {
    while (!isStopped_) {
        const auto line = lines_.next();
        if (!line) break;
        if (isDirectiveLine(*line)) {
            parseDirective(*line);
        } else if (const auto record = parseTextLine(parse_, *line)) {
            parse_.program.records.push_back(*record);
        } else {
            fail();
        }
    }
    return !isFailed_;
}

void ScriptParser::parseDirective(std::string_view line) {
    const auto name = parseDirectiveLine(parse_, line);
    if (!name) {
        parse_.listener.lineSkipped(parse_.error);
    } else if (equalsWord(*name, "DIALOG")) {
        parseDialog(line);
    } else if (equalsWord(*name, "IF")) {
        addConditional(line, ConditionalKind::If, "IF");
    } else if (equalsWord(*name, "ELSEIF")) {
        addConditional(line, ConditionalKind::ElseIf, "ELSEIF");
    } else if (equalsWord(*name, "ELSE")) {
        addConditional(line, ConditionalKind::Else, {});
    } else if (equalsWord(*name, "ENDIF")) {
        addConditional(line, ConditionalKind::EndIf, {});
    } else {
        addDirectiveCall(line, *name);
    }
}

// dialog-block := "#DIALOG" [ title ] { expression } "#ENDDIALOG"
void ScriptParser::parseDialog(std::string_view line) {
    Program& program = parse_.program;
    Dialog dialog{std::nullopt, {program.expressions.size(), 0}};
    if (!parse_.parameters.empty()) {
        const auto* word = std::get_if<Word>(&parse_.parameters.front());
        dialog.title = word != nullptr ? Reference{word->text} : parse_.parameters.front();
    }
    while (const auto item = lines_.next()) {
        if (equalsWord(*item, "#ENDDIALOG")) {
            program.records.push_back(
                {program.place(line.data()), DialogBlock{program.dialogs.size()}});
            program.dialogs.push_back(dialog);
            return;
        }
        if (parseWholeExpression(parse_, *item)) {
            ++dialog.items.count;
        } else {
            fail();
            if (isStopped_) return;
        }
    }
    parse_.fail(line.data(), "Unclosed #DIALOG block");
    fail();
}

// conditional := "#IF" comparison | "#ELSEIF" comparison | "#ELSE" | "#ENDIF"
//
// A record stands also for a bad comparison, so that whoever looks for more errors sees the block.
void ScriptParser::addConditional(std::string_view line, ConditionalKind kind,
                                  std::string_view keyword) {
    Program& program = parse_.program;
    program.records.push_back(
        {program.place(line.data()), Conditional{kind, program.comparisons.size()}});
    if (keyword.empty()) return;
    const auto comparison = parseComparison(parse_, line, keyword);
    if (!comparison) fail();
    program.comparisons.push_back(comparison.value_or(Comparison{}));
}

void ScriptParser::addDirectiveCall(std::string_view line, std::string_view name) {
    Program& program = parse_.program;
    const Range range{program.parameters.size(), static_cast<Small>(parse_.parameters.size())};
    for (const Parameter& parameter : parse_.parameters)
        program.parameters.push_back(parameter);
    program.records.push_back(
        {program.place(line.data()), DirectiveCall{program.directives.size()}});
    program.directives.push_back({program.piece(name), range});
}

void ScriptParser::fail() {
    isFailed_ = true;
    if (!parse_.listener.failed(parse_.error)) isStopped_ = true;
}

}  // namespace

bool parseScript(std::string_view text, const Characters& characters, Program& program,
                 ParseListener& listener) {
    return ScriptParser(text, characters, program, listener).parse();
}

}  // namespace kel::script
