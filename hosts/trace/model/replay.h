#pragma once
// Compares the calls of a run with a recording and plays what the recording tells.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hosts/trace/model/replay_lane.h"

namespace kel::trace {

// Each lane is compared for itself, in its order. A call of a thread that is in none is compared
// with the first lane that nobody is in and that expects it: threads are not told apart otherwise.
class Replay {
public:
    Replay(std::vector<Event> events, Stage& stage);

    // The recorded end of the call. Throws Difference. The session's thread is 0; others may call
    // at the same time.
    CallEnded call(const Call& actual, Rule rule, std::uint32_t thread = 0);

    // Recorded calls that are compared and have not come.
    std::size_t callsLeft() const;

    // Empty while there is none.
    std::string difference() const { return state_.difference(); }

    // True when a method of an object was ever called.
    bool tells(const std::string& object, std::string_view method) const;

private:
    class Use;

    CallEnded compared(const Call& actual, bool isRepeatable, std::uint32_t thread);
    CallEnded uncompared(const Call& actual, Rule rule, std::uint32_t thread);

    ReplayState state_;
    ReplayLane::Places places_;
    // By their numbers; that of the session's thread is always there.
    std::map<std::int64_t, std::unique_ptr<ReplayLane>> lanes_;
    std::mutex mutex_;
    // By threads: the lane that they are in, and how many calls deep.
    std::map<std::uint32_t, std::pair<ReplayLane*, int>> users_;
};

}  // namespace kel::trace
