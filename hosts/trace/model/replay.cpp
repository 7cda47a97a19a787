#include "hosts/trace/model/replay.h"

#include <algorithm>

#include "hosts/trace/model/difference.h"

namespace kel::trace {

// A thread's stay in the lane that it calls in.
class Replay::Use {
public:
    Use(Replay& replay, const Call& actual, bool isCompared, std::uint32_t thread)
        : replay_(replay), thread_(thread) {
        const std::lock_guard lock(replay_.mutex_);
        if (thread == 0) {
            lane_ = replay_.lanes_.at(0).get();
            return;
        }
        const auto user = replay_.users_.find(thread);
        lane_ = user == replay_.users_.end() ? choose(actual, isCompared) : user->second.first;
        if (!lane_) return;
        const auto entered = replay_.users_.try_emplace(thread, lane_, 0).first;
        ++entered->second.second;
    }
    ~Use() {
        if (thread_ == 0 || !lane_) return;
        const std::lock_guard lock(replay_.mutex_);
        const auto user = replay_.users_.find(thread_);
        if (--user->second.second == 0) replay_.users_.erase(user);
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    // Null where no lane is free.
    ReplayLane* lane() const { return lane_; }

private:
    // One that expects the call, else for one that is compared the first that expects any.
    ReplayLane* choose(const Call& actual, bool isCompared) const {
        ReplayLane* other = nullptr;
        for (const auto& each : replay_.lanes_) {
            ReplayLane* const lane = each.second.get();
            const bool isUsed = std::ranges::any_of(
                replay_.users_, [&](const auto& user) { return user.second.first == lane; });
            if (each.first == 0 || isUsed) continue;
            if (lane->expects(actual)) return lane;
            if (isCompared && !other && lane->callsLeft() > 0) other = lane;
        }
        return other;
    }

    Replay& replay_;
    const std::uint32_t thread_;
    ReplayLane* lane_ = nullptr;
};

Replay::Replay(std::vector<Event> events, Stage& stage) {
    const auto laneOf = [&](std::int64_t number) -> ReplayLane& {
        auto& lane = lanes_[number];
        if (!lane) lane = std::make_unique<ReplayLane>(state_, stage, places_);
        return *lane;
    };
    laneOf(0);
    for (std::size_t order = 0; order < events.size(); ++order) {
        ReplayLane& lane = laneOf(events[order].lane);
        lane.add(std::move(events[order]), order);
    }
    for (const auto& [number, lane] : lanes_)
        lane->completeTo(places_);
    for (auto& [object, places] : places_)
        std::ranges::sort(places, {}, &ReplayLane::Place::order);
}

CallEnded Replay::call(const Call& actual, Rule rule, std::uint32_t thread) {
    state_.stopIfDifferent();
    state_.setPosition(actual.position);
    if (rule == Rule::kState || rule == Rule::kPolled) return uncompared(actual, rule, thread);
    return compared(actual, rule == Rule::kRepeatable, thread);
}

CallEnded Replay::compared(const Call& actual, bool isRepeatable, std::uint32_t thread) {
    const Use use(*this, actual, true, thread);
    if (!use.lane()) state_.leave(describeDifference(nullptr, &actual, actual.position));
    return use.lane()->compared(actual, isRepeatable);
}

// Answers from the events up to the next compared call when the same call is there, else from what
// is known.
CallEnded Replay::uncompared(const Call& actual, Rule rule, std::uint32_t thread) {
    const Use use(*this, actual, false, thread);
    const bool isRecordedHere = use.lane() && use.lane()->passTo(actual);
    state_.stopIfDifferent();
    if (!isRecordedHere && rule == Rule::kPolled) return {};

    if (const auto known = state_.known(actual)) return *known;
    for (const auto& [number, lane] : lanes_)
        if (const CallEnded* later = lane->laterAnswer(actual)) return *later;
    return {};
}

std::size_t Replay::callsLeft() const {
    std::size_t count = 0;
    for (const auto& [number, lane] : lanes_)
        count += lane->callsLeft();
    return count;
}

bool Replay::tells(const std::string& object, std::string_view method) const {
    return std::ranges::any_of(
        lanes_, [&](const auto& entry) { return entry.second->tells(object, method); });
}

}  // namespace kel::trace
