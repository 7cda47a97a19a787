#include "script/engine/prepared_answers.h"

#include <algorithm>
#include <optional>

#include "script/engine/questions.h"

namespace kel::script {
namespace {

std::optional<std::string> resultOf(const Control& control, const std::string& answer,
                                    const TextRules& rules) {
    if (control.kind == ControlKind::Check) return checkState(answer);
    if (control.kind == ControlKind::Input) return answer;
    const auto choice =
        std::find_if(control.choices.begin(), control.choices.end(),
                     [&](const std::string& text) { return rules.equal(text, answer); });
    return choice == control.choices.end() ? std::nullopt : std::optional(*choice);
}

}  // namespace

Answers PreparedAnswers::answer(const Question& question, std::string& missing) const {
    std::vector<std::string> results;
    for (const Control& control : question.controls) {
        const std::string& name = control.target.empty() ? control.caption : control.target;
        const std::string* answer = answers_.find(name);
        auto result = answer == nullptr ? std::nullopt : resultOf(control, *answer, rules_);
        if (!result) {
            missing = name;
            return std::nullopt;
        }
        results.push_back(*std::move(result));
    }
    return results;
}

}  // namespace kel::script
