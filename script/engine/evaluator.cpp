#include "script/engine/evaluator.h"

#include <utility>

#include "script/engine/questions.h"

namespace kel::script {
namespace {

constexpr const char* kQuestionTitle = "Input";

template <class Element>
std::optional<std::vector<std::string>> evaluateAll(const Evaluator& evaluator,
                                                    const Pool<Element>& pool, Range range) {
    std::vector<std::string> values;
    values.reserve(range.count);
    for (std::size_t i = 0; i < range.count; ++i) {
        auto value = evaluator.evaluate(pool[range.first + i]);
        if (!value) return std::nullopt;
        values.push_back(*std::move(value));
    }
    return values;
}

}  // namespace

void Environment::setVariable(std::string_view name, const std::string& value) const {
    variables.set(name, value);
    observer.variableSet(name, value);
}

std::string_view functionName(const Program& program, const Call& call) {
    return call.name.size == 0 ? std::string_view("input") : program.view(call.name);
}

const Call* controlCall(const Program& program, const Expression& item) {
    const auto* call = std::get_if<Call>(&item.value);
    return call != nullptr && controlKind(functionName(program, *call)) ? call : nullptr;
}

std::optional<std::string> Evaluator::evaluate(const Expression& expression) const {
    const auto* callee = std::get_if<Call>(&expression.value);
    const auto target = program_.target(expression);
    auto value =
        callee != nullptr ? call(*callee, target) : evaluate(std::get<Operand>(expression.value));
    if (value && target) environment_.setVariable(*target, *value);
    return value;
}

std::optional<std::string> Evaluator::evaluate(const Operand& operand) const {
    if (const auto* literal = std::get_if<Literal>(&operand))
        return std::string(program_.view(literal->text));
    return evaluate(std::get<Reference>(operand));
}

std::optional<std::string> Evaluator::evaluate(const Parameter& parameter) const {
    if (const auto* literal = std::get_if<Literal>(&parameter))
        return std::string(program_.view(literal->text));
    if (const auto* reference = std::get_if<Reference>(&parameter)) return evaluate(*reference);
    if (const auto* word = std::get_if<Word>(&parameter)) {
        const std::string_view text = program_.view(word->text);
        const std::string* value = environment_.variables.find(text);
        return value != nullptr ? *value : std::string(text);
    }
    return evaluate(program_.expressions[std::get<ExpressionIndex>(parameter).index]);
}

std::optional<std::vector<std::string>> Evaluator::operands(Range range) const {
    return evaluateAll(*this, program_.operands, range);
}

std::optional<std::vector<std::string>> Evaluator::parameters(Range range) const {
    return evaluateAll(*this, program_.parameters, range);
}

std::optional<std::string> Evaluator::evaluate(Reference reference) const {
    const std::string* value = variable(reference);
    return value ? std::optional(*value) : std::nullopt;
}

const std::string* Evaluator::variable(Reference reference) const {
    const std::string_view name = program_.view(reference.name);
    const std::string* value = environment_.variables.find(name);
    if (!value) environment_.reporter.errorAt(name.data(), "Variable not found:", {name});
    return value;
}

std::optional<std::string> Evaluator::call(const Call& call,
                                           std::optional<std::string_view> target) const {
    const std::string_view name = functionName(program_, call);
    const auto kind = controlKind(name);
    if (!kind) return callFunction(call, name);

    auto values = operands(call.parameters);
    if (!values) return std::nullopt;
    Question question{kQuestionTitle, {}};
    question.controls.push_back(
        makeControl(*kind, target, *std::move(values), environment_.variables, environment_.rules));
    const Answers answers = environment_.host.ask(question);
    if (answers && answers->size() == 1) return answers->front();
    environment_.reporter.errorAt(program_.at(call.name.begin),
                                  "Error evaluating expression:", {name});
    return std::nullopt;
}

std::optional<std::string> Evaluator::callFunction(const Call& call, std::string_view name) const {
    Host& host = environment_.host;
    Reporter& reporter = environment_.reporter;
    std::optional<std::size_t> row = host.findFunction(name, 0);
    for (; row; row = host.findFunction(name, *row + 1)) {
        const auto values = operands(call.parameters);
        if (!values) return std::nullopt;
        const std::size_t errorsBefore = reporter.count();
        FunctionOutcome outcome = host.callFunction(*row, *values);
        if (!outcome.result) {
            reporter.noteUnlessReported(errorsBefore, "The function failed: " + std::string(name));
            return std::nullopt;
        }
        if (outcome.handled) return std::move(outcome.value);
    }
    reporter.errorAt(name.data(), "Unknown function:", {name});
    return std::nullopt;
}

}  // namespace kel::script
