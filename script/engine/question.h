#pragma once
// What a script asks its user.

#include <optional>
#include <string>
#include <vector>

namespace kel::script {

enum class ControlKind { Check, Select, Input };

struct Control {
    ControlKind kind = ControlKind::Input;
    std::string caption;
    std::string initial;               // "1" or "0" for a check; one of the choices for a select
    std::vector<std::string> choices;  // of a select
    std::string target;                // the variable that receives the result; may be empty
};

struct Question {
    std::string title;
    std::vector<Control> controls;
};

// One result per control, in their order: "1" or "0", the chosen text, the edited text. Nothing
// when the user cancelled or the question could not be put.
using Answers = std::optional<std::vector<std::string>>;

}  // namespace kel::script
