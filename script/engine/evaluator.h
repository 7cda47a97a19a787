#pragma once
// The values of expressions and of the parameters of directives.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine/host.h"
#include "script/engine/observer.h"
#include "script/engine/program.h"
#include "script/engine/reporter.h"
#include "script/engine/text_rules.h"
#include "script/engine/variables.h"

namespace kel::script {

// What a running script works with.
struct Environment {
    Host& host;
    VariableStore& variables;
    const TextRules& rules;
    Observer& observer;
    Reporter& reporter;

    void setVariable(std::string_view name, const std::string& value) const;
};

// Every value that cannot be had has been reported when nothing is returned.
class Evaluator {
public:
    // Both must outlive the evaluator.
    Evaluator(const Program& program, const Environment& environment)
        : program_(program), environment_(environment) {}

    // Includes the assignment to the expression's target.
    std::optional<std::string> evaluate(const Expression& expression) const;

    std::optional<std::string> evaluate(const Operand& operand) const;
    std::optional<std::string> evaluate(const Parameter& parameter) const;
    std::optional<std::string> evaluate(Reference reference) const;

    // From left to right.
    std::optional<std::vector<std::string>> operands(Range range) const;
    std::optional<std::vector<std::string>> parameters(Range range) const;

    // Null after an error was told. Calling out may change or end the value.
    const std::string* variable(Reference reference) const;

private:
    std::optional<std::string> call(const Call& call, std::optional<std::string_view> target) const;
    std::optional<std::string> callFunction(const Call& call, std::string_view name) const;

    const Program& program_;
    const Environment& environment_;
};

// The name that a call has or, when it has none, stands for.
std::string_view functionName(const Program& program, const Call& call);

// The call of an item of a dialog that is a control; null for an ordinary expression.
const Call* controlCall(const Program& program, const Expression& item);

}  // namespace kel::script
