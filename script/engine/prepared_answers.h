#pragma once
// Answers for scripts that run without a user.

#include <string>
#include <string_view>
#include <utility>

#include "script/engine/question.h"
#include "script/engine/text_rules.h"
#include "script/engine/variables.h"

namespace kel::script {

// A host that has answers asks this object before it shows a question.
class PreparedAnswers {
public:
    // `rules` must outlive the object.
    explicit PreparedAnswers(const TextRules& rules) : rules_(rules), answers_(rules) {}

    // `name` is that of the variable that a control sets, or the caption of a control that sets
    // none; in any letter case.
    void set(std::string_view name, std::string answer) { answers_.set(name, std::move(answer)); }

    // The results of the question's controls. Nothing when a control has no answer, or when the
    // answer to a select is not among its choices; `missing` then receives its name.
    Answers answer(const Question& question, std::string& missing) const;

    // The answer of that name; null when there is none.
    const std::string* find(std::string_view name) const { return answers_.find(name); }

private:
    const TextRules& rules_;
    VariableStore answers_;
};

}  // namespace kel::script
