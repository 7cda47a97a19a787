#pragma once
// Which lines of a run are active.

#include <cstddef>
#include <vector>

namespace kel::script {

// The open conditional blocks of one run. A block is a stack entry, so that depth costs no more
// than length.
class ConditionStack {
public:
    bool isActive() const { return blocks_.back().isEnclosingActive && blocks_.back().isCurrent; }

    // #IF. Returns whether its condition counts, to be given to `decide`.
    bool open();

    // #ELSEIF. Returns whether its condition counts, to be given to `decide`.
    bool openAlternative();

    void decide(bool condition) { blocks_.back().isCurrent = condition; }

    // #ELSE.
    void openRest();

    // #ENDIF. False when no block is open.
    bool close();

private:
    struct Block {
        bool isEnclosingActive = true;
        bool isBranchTaken = false;  // set when a branch that ran is left
        bool isCurrent = false;
    };

    bool leaveCurrentBranch();

    std::vector<Block> blocks_{Block{true, false, true}};
};

}  // namespace kel::script
