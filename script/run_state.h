#pragma once
// What is known of the runs of a preprocessor while they go on.

#include <cstddef>
#include <string>
#include <utility>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::script {

struct RunState {
    // Runs under way: an outermost one and those nested in it.
    std::size_t depth = 0;

    // The link of the innermost run: a new link given meanwhile is for the next run.
    com::ComPtr<IKelCommunicator> communicator;

    // Asked from outside; stays set after the run, so that the host can tell.
    bool cancelRequested = false;

    // True while a handler runs that may start a nested run. At any other moment a second run would
    // mix its lines with those of the first.
    bool mayNest = false;

    // Path of the file that the next nested run comes from, for its messages.
    std::wstring nextScriptName;
};

// One run, from start to end.
class RunScope {
public:
    RunScope(RunState& state, com::ComPtr<IKelCommunicator> communicator)
        : state_(state),
          outerCommunicator_(std::exchange(state.communicator, std::move(communicator))),
          outerMayNest_(std::exchange(state.mayNest, false)) {
        ++state_.depth;
    }
    ~RunScope() {
        --state_.depth;
        state_.mayNest = outerMayNest_;
        state_.communicator = std::move(outerCommunicator_);
    }
    RunScope(const RunScope&) = delete;
    RunScope& operator=(const RunScope&) = delete;

private:
    RunState& state_;
    com::ComPtr<IKelCommunicator> outerCommunicator_;
    bool outerMayNest_;
};

// The call of a handler that may start a nested run.
class NestingScope {
public:
    // `scriptName`: the file that the nested run comes from, where it is known.
    explicit NestingScope(RunState& state, std::wstring scriptName = {})
        : state_(state), outerMayNest_(std::exchange(state.mayNest, true)) {
        state.nextScriptName = std::move(scriptName);
    }
    ~NestingScope() {
        state_.mayNest = outerMayNest_;
        state_.nextScriptName.clear();
    }
    NestingScope(const NestingScope&) = delete;
    NestingScope& operator=(const NestingScope&) = delete;

private:
    RunState& state_;
    bool outerMayNest_;
};

}  // namespace kel::script
