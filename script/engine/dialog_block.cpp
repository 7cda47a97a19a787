#include "script/engine/dialog_block.h"

#include <utility>

#include "script/engine/questions.h"

namespace kel::script {
namespace {

// Builds the question. Ordinary items take effect here, before it is shown.
std::optional<Question> composeQuestion(const Dialog& dialog, const Program& program,
                                        const Evaluator& evaluator,
                                        const Environment& environment) {
    Question question;
    if (dialog.title) {
        auto title = evaluator.evaluate(*dialog.title);
        if (!title) return std::nullopt;
        question.title = *std::move(title);
    }
    for (std::size_t i = 0; i < dialog.items.count; ++i) {
        const Expression& item = program.expressions[dialog.items.first + i];
        const Call* call = controlCall(program, item);
        if (call == nullptr) {
            if (!evaluator.evaluate(item)) return std::nullopt;
            continue;
        }
        auto parameters = evaluator.operands(call->parameters);
        if (!parameters) return std::nullopt;
        question.controls.push_back(makeControl(*controlKind(functionName(program, *call)),
                                                program.target(item), *std::move(parameters),
                                                environment.variables, environment.rules));
    }
    return question;
}

void storeAnswers(const Dialog& dialog, const Program& program,
                  const std::vector<std::string>& answers, const Environment& environment) {
    auto answer = answers.begin();
    for (std::size_t i = 0; i < dialog.items.count; ++i) {
        const Expression& item = program.expressions[dialog.items.first + i];
        if (controlCall(program, item) == nullptr) continue;
        if (const auto target = program.target(item)) environment.setVariable(*target, *answer);
        ++answer;
    }
}

}  // namespace

bool runDialog(const Dialog& dialog, const Program& program, const Evaluator& evaluator,
               const Environment& environment) {
    const auto question = composeQuestion(dialog, program, evaluator, environment);
    if (!question) return false;
    const Answers answers = environment.host.ask(*question);
    if (!answers || answers->size() != question->controls.size()) {
        return environment.reporter.note("The dialog was cancelled");
    }
    storeAnswers(dialog, program, *answers, environment);
    return true;
}

}  // namespace kel::script
