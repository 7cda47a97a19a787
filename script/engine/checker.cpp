#include "script/engine/checker.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "script/engine/evaluator.h"
#include "script/engine/locator.h"
#include "script/engine/parser.h"
#include "script/engine/questions.h"

namespace kel::script {
namespace {

// Keeps what is found, with its place.
class Findings {
public:
    Findings(std::string_view text, std::string_view script) : locator_(text), script_(script) {}

    void add(const char* where, Severity severity, std::string message) {
        const Position position = locator_.locate(where);
        found_.push_back({script_, position.line, position.column, severity, std::move(message)});
    }

    std::vector<Diagnostic> inOrder() && {
        std::stable_sort(found_.begin(), found_.end(), [](const auto& a, const auto& b) {
            return std::tie(a.line, a.column) < std::tie(b.line, b.column);
        });
        return std::move(found_);
    }

private:
    Locator locator_;
    std::string script_;
    std::vector<Diagnostic> found_;
};

// Keeps everything that a parse meets, and never stops it.
class ParseFindings : public ParseListener {
public:
    explicit ParseFindings(Findings& findings) : findings_(findings) {}

    void lineSkipped(const SyntaxError& error) override { failed(error); }

    bool failed(const SyntaxError& error) override {
        std::string message = error.message;
        if (error.part) message.append(1, ' ').append(*error.part);
        findings_.add(error.where, Severity::Error, std::move(message));
        return true;
    }

    void textIgnored(std::string_view text) override {
        findings_.add(text.data(), Severity::Warning, "Text after the expression is ignored");
    }

private:
    Findings& findings_;
};

// Follows a program in the order of its lines, as if every condition held.
class Checker {
public:
    Checker(const Program& program, const TextRules& rules, const Characters& characters,
            const VariableStore& variables, Host& host, Findings& findings)
        : program_(program),
          rules_(rules),
          characters_(characters),
          host_(host),
          findings_(findings) {
        for (std::size_t i = 0; i < variables.size(); ++i)
            markSet(variables[i].name);
    }

    void checkAll();

private:
    void check(const PlainText& /*text*/) {}
    void check(const ComposedText& text);
    void check(const Evaluation& evaluation) { check(program_.expressions[evaluation.expression]); }
    void check(const DirectiveCall& call);
    void check(const Conditional& conditional);
    void check(const DialogBlock& block);

    void check(const Literal& /*literal*/) {}
    void check(const Reference& reference);
    void check(const Word& word);
    void check(const ExpressionIndex& expression) { check(program_.expressions[expression.index]); }
    void check(const Call& call);
    void check(const Expression& expression);

    template <class... Kinds>
    void check(const std::variant<Kinds...>& value) {
        std::visit([this](const auto& kind) { this->check(kind); }, value);
    }

    template <class Element>
    void checkRange(const Pool<Element>& pool, Range range) {
        for (std::size_t i = 0; i < range.count; ++i)
            check(pool[range.first + i]);
    }

    bool isSet(std::string_view name) const { return set_.count(rules_.fold(name)) != 0; }
    void markSet(std::string_view name) { set_.insert(rules_.fold(name)); }
    void warn(const char* where, std::string message) {
        findings_.add(where, Severity::Warning, std::move(message));
    }

    const Program& program_;
    const TextRules& rules_;
    const Characters& characters_;
    Host& host_;
    Findings& findings_;
    std::unordered_set<std::string> set_;
    std::vector<const char*> openBlocks_;
    const char* here_ = nullptr;
};

void Checker::checkAll() {
    for (std::size_t i = 0; i < program_.records.size(); ++i) {
        const Record& record = program_.records[i];
        here_ = program_.at(record.start);
        check(record.work);
    }
    for (const char* block : openBlocks_)
        warn(block, "#IF without #ENDIF");
}

void Checker::check(const ComposedText& text) {
    checkRange(program_.segments, text.segments);
}

void Checker::check(const DirectiveCall& call) {
    const Directive& directive = program_.directives[call.directive];
    const std::string_view name = program_.view(directive.name);
    if (!host_.findDirective(name, 0)) {
        warn(here_, "Unknown preprocessor directive: " + std::string(name));
    }
    checkRange(program_.parameters, directive.parameters);
}

void Checker::check(const Conditional& conditional) {
    const bool isInBlock = !openBlocks_.empty();
    switch (conditional.kind) {
        case ConditionalKind::If:
            openBlocks_.push_back(here_);
            break;
        case ConditionalKind::ElseIf:
            if (!isInBlock) warn(here_, "#ELSEIF without #IF: nothing runs after it");
            break;
        case ConditionalKind::Else:
            if (!isInBlock) warn(here_, "#ELSE without #IF: nothing runs after it");
            return;
        case ConditionalKind::EndIf:
            if (isInBlock) {
                openBlocks_.pop_back();
            } else {
                findings_.add(here_, Severity::Error, "#ENDIF without matching #IF");
            }
            return;
    }
    const Comparison& comparison = program_.comparisons[conditional.comparison];
    check(comparison.left);
    check(comparison.right);
}

void Checker::check(const DialogBlock& block) {
    const Dialog& dialog = program_.dialogs[block.dialog];
    if (dialog.title) check(*dialog.title);
    std::vector<std::string_view> answered;
    for (std::size_t i = 0; i < dialog.items.count; ++i) {
        const Expression& item = program_.expressions[dialog.items.first + i];
        const Call* call = controlCall(program_, item);
        if (call == nullptr) {
            check(item);
            continue;
        }
        check(*call);
        if (const auto target = program_.target(item)) answered.push_back(*target);
    }
    for (const std::string_view name : answered)
        markSet(name);
}

void Checker::check(const Reference& reference) {
    const std::string_view name = program_.view(reference.name);
    if (isSet(name)) return;
    if (name.empty()) {
        warn(name.data(), "A name is missing");
        return;
    }
    warn(name.data(), "Variable not found: " + std::string(name));
    markSet(name);
}

void Checker::check(const Word& word) {
    const std::string_view text = program_.view(word.text);
    const bool looksLikeName =
        std::all_of(text.begin(), text.end(), [this](char c) { return characters_.isName(c); });
    if (looksLikeName && !isSet(text)) {
        warn(text.data(), "Not a variable, taken as a text: " + std::string(text));
    }
}

void Checker::check(const Call& call) {
    const std::string_view name = functionName(program_, call);
    if (!controlKind(name) && !host_.findFunction(name, 0)) {
        warn(name.data(), "Unknown function: " + std::string(name));
    }
    checkRange(program_.operands, call.parameters);
}

void Checker::check(const Expression& expression) {
    check(expression.value);
    if (const auto target = program_.target(expression)) markSet(*target);
}

}  // namespace

std::vector<Diagnostic> checkScript(std::string_view text, std::string_view name,
                                    const TextRules& rules, const Characters& characters,
                                    const VariableStore& variables, Host& host) {
    Findings findings(text, name);
    ParseFindings parseFindings(findings);
    Program program(text);
    parseScript(text, characters, program, parseFindings);
    Checker(program, rules, characters, variables, host, findings).checkAll();
    return std::move(findings).inOrder();
}

}  // namespace kel::script
