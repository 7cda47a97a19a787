// What is known of the runs of a preprocessor while they go on.
#pragma once

#include <cstddef>
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
    explicit NestingScope(RunState& state)
        : state_(state), outer_(std::exchange(state.mayNest, true)) {}
    ~NestingScope() { state_.mayNest = outer_; }
    NestingScope(const NestingScope&) = delete;
    NestingScope& operator=(const NestingScope&) = delete;

private:
    RunState& state_;
    bool outer_;
};

}  // namespace kel::script
