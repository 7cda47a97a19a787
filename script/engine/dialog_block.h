#pragma once
// The run of one #DIALOG block.

#include "script/engine/evaluator.h"

namespace kel::script {

// Evaluates the items, puts the question and stores the answers. False ends the run.
bool runDialog(const Dialog& dialog, const Program& program, const Evaluator& evaluator,
               const Environment& environment);

}  // namespace kel::script
