#include "script/engine/conditions.h"

namespace kel::script {

bool ConditionStack::open() {
    const bool counts = isActive();
    blocks_.push_back({counts, false, false});
    return counts;
}

bool ConditionStack::openAlternative() {
    return blocks_.back().isEnclosingActive && !blocks_.back().isBranchTaken &&
           !leaveCurrentBranch();
}

void ConditionStack::openRest() {
    if (openAlternative()) decide(true);
}

bool ConditionStack::close() {
    if (blocks_.size() == 1) return false;
    blocks_.pop_back();
    return true;
}

bool ConditionStack::leaveCurrentBranch() {
    Block& block = blocks_.back();
    if (!block.isCurrent) return false;
    block.isCurrent = false;
    block.isBranchTaken = true;
    return true;
}

}  // namespace kel::script
