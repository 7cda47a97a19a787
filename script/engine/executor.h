#pragma once
// From a program's records to what they do.

#include <string>
#include <string_view>

#include "script/engine/conditions.h"
#include "script/engine/evaluator.h"

namespace kel::script {

// One run of one program.
class Executor {
public:
    // Both must outlive the executor.
    Executor(const Program& program, const Environment& environment)
        : program_(program), environment_(environment), evaluator_(program, environment) {}

    // False when a record ended the run.
    bool run();

private:
    bool execute(const Record& record);

    // A function per kind of record, called in active regions; false ends the run.
    bool execute(const PlainText& text);
    bool execute(const ComposedText& text);
    bool execute(const Evaluation& evaluation);
    bool execute(const DirectiveCall& call);
    bool execute(const Conditional& conditional);
    bool execute(const DialogBlock& block);

    bool send(std::string_view line);
    bool decide(const Comparison& comparison);

    const Program& program_;
    const Environment& environment_;
    const Evaluator evaluator_;
    ConditionStack conditions_;
    std::string line_;  // of the composed text that is put together; keeps its memory
};

}  // namespace kel::script
