#include "script/engine/questions.h"

#include <algorithm>
#include <utility>

namespace kel::script {
namespace {

std::string firstChoice(const std::vector<std::string>& choices, const std::string* wanted,
                        const TextRules& rules) {
    if (choices.empty()) return {};
    if (wanted == nullptr) return choices.front();
    const auto found = std::find_if(choices.begin(), choices.end(), [&](const std::string& choice) {
        return rules.equal(choice, *wanted);
    });
    return found == choices.end() ? choices.front() : *found;
}

}  // namespace

std::optional<ControlKind> controlKind(std::string_view functionName) {
    if (equalsWord(functionName, "input")) return ControlKind::Input;
    if (equalsWord(functionName, "check")) return ControlKind::Check;
    if (equalsWord(functionName, "select")) return ControlKind::Select;
    return std::nullopt;
}

std::string checkState(std::string_view text) {
    return text.empty() || text == "0" ? "0" : "1";
}

Control makeControl(ControlKind kind, std::optional<std::string_view> target,
                    std::vector<std::string> parameters, const VariableStore& variables,
                    const TextRules& rules) {
    Control control;
    control.kind = kind;
    control.target = target.value_or(std::string_view{});
    if (!parameters.empty()) {
        control.caption = std::move(parameters.front());
        parameters.erase(parameters.begin());
    }
    const std::string* present = target ? variables.find(*target) : nullptr;
    if (kind == ControlKind::Select) {
        control.choices = std::move(parameters);
        control.initial = firstChoice(control.choices, present, rules);
        return control;
    }
    if (present != nullptr) {
        control.initial = *present;
    } else if (!parameters.empty()) {
        control.initial = std::move(parameters.front());
    }
    if (kind == ControlKind::Check) control.initial = checkState(control.initial);
    return control;
}

}  // namespace kel::script
