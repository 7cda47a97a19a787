#include "script/engine/executor.h"

#include "script/engine/dialog_block.h"

namespace kel::script {
bool Executor::run() {
    for (std::size_t i = 0; i < program_.records.size(); ++i) {
        const Record& record = program_.records[i];
        environment_.reporter.moveTo(program_.at(record.start));
        environment_.host.yield();
        if (environment_.host.cancelRequested()) {
            return environment_.reporter.error("Execution cancelled!");
        }
        if (!execute(record)) return false;
    }
    return true;
}

bool Executor::execute(const Record& record) {
    if (!conditions_.isActive() && !std::holds_alternative<Conditional>(record.work)) return true;
    environment_.observer.lineStarted(environment_.reporter.line());
    return std::visit([this](const auto& work) { return execute(work); }, record.work);
}

bool Executor::execute(const PlainText& text) {
    return send(program_.view(text.text));
}

bool Executor::execute(const ComposedText& text) {
    line_.clear();
    for (std::size_t i = 0; i < text.segments.count; ++i) {
        const Segment& segment = program_.segments[text.segments.first + i];
        if (const auto* literal = std::get_if<Literal>(&segment)) {
            line_ += program_.view(literal->text);
            continue;
        }
        if (const auto* reference = std::get_if<Reference>(&segment)) {
            const std::string* value = evaluator_.variable(*reference);
            if (!value) return false;
            line_ += *value;
            continue;
        }
        const auto value =
            evaluator_.evaluate(program_.expressions[std::get<ExpressionIndex>(segment).index]);
        if (!value) return false;
        line_ += *value;
    }
    return send(line_);
}

bool Executor::execute(const Evaluation& evaluation) {
    return evaluator_.evaluate(program_.expressions[evaluation.expression]).has_value();
}

bool Executor::execute(const DirectiveCall& call) {
    const Directive& directive = program_.directives[call.directive];
    const std::string_view name = program_.view(directive.name);
    Host& host = environment_.host;
    Reporter& reporter = environment_.reporter;
    std::optional<std::size_t> row = host.findDirective(name, 0);
    for (; row; row = host.findDirective(name, *row + 1)) {
        const auto parameters = evaluator_.parameters(directive.parameters);
        if (!parameters) return false;
        environment_.observer.directiveStarted(name, *parameters);
        const std::size_t errorsBefore = reporter.count();
        const DirectiveOutcome outcome = host.callDirective(*row, *parameters);
        if (!outcome.result) {
            return reporter.noteUnlessReported(errorsBefore,
                                               "The directive failed: " + std::string(name));
        }
        if (outcome.handled) return true;
    }
    return reporter.error("Unknown preprocessor directive:", {name});
}

bool Executor::execute(const Conditional& conditional) {
    switch (conditional.kind) {
        case ConditionalKind::If:
            return !conditions_.open() || decide(program_.comparisons[conditional.comparison]);
        case ConditionalKind::ElseIf:
            return !conditions_.openAlternative() ||
                   decide(program_.comparisons[conditional.comparison]);
        case ConditionalKind::Else:
            conditions_.openRest();
            return true;
        case ConditionalKind::EndIf:
            break;
    }
    if (conditions_.close()) return true;
    return environment_.reporter.error("#ENDIF without matching #IF");
}

bool Executor::execute(const DialogBlock& block) {
    return runDialog(program_.dialogs[block.dialog], program_, evaluator_, environment_);
}

bool Executor::send(std::string_view line) {
    Reporter& reporter = environment_.reporter;
    const std::size_t errorsBefore = reporter.count();
    if (environment_.host.send(line)) return true;
    return reporter.noteUnlessReported(errorsBefore, "The line could not be sent");
}

bool Executor::decide(const Comparison& comparison) {
    const auto left = evaluator_.evaluate(comparison.left);
    if (!left) return false;
    const auto right = evaluator_.evaluate(comparison.right);
    if (!right) return false;
    conditions_.decide(environment_.rules.equal(*left, *right) == comparison.isEqual);
    return true;
}

}  // namespace kel::script
