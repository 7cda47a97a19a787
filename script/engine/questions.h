#pragma once
// How the calls of `check`, `select` and `input` describe controls.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine/question.h"
#include "script/engine/text_rules.h"
#include "script/engine/variables.h"

namespace kel::script {

// The kind of control that a function stands for; nothing when it is an ordinary function.
std::optional<ControlKind> controlKind(std::string_view functionName);

// `input(caption, initial)`, `check(caption, initial)`, `select(caption, choice, ...)`. The
// present value of the target variable goes before the initial one.
Control makeControl(ControlKind kind, std::optional<std::string_view> target,
                    std::vector<std::string> parameters, const VariableStore& variables,
                    const TextRules& rules);

// The form that the result of a check has: "0" for nothing and for "0", else "1".
std::string checkState(std::string_view text);

}  // namespace kel::script
