#include "hosts/trace/model/replay_state.h"

namespace kel::trace {
namespace {

std::string keyOf(const std::string& object, std::string_view method) {
    return object + "." + std::string(method);
}

// The answer of a member that says no.
const Json::Array kNo{false};

bool isFailure(std::uint32_t result) {
    return (result & 0x80000000u) != 0;
}

}  // namespace

std::string ReplayState::difference() const {
    const std::lock_guard lock(mutex_);
    return difference_;
}

void ReplayState::stopIfDifferent() const {
    const std::string now = difference();
    if (!now.empty()) throw Difference(now);
}

void ReplayState::leave(std::string difference) {
    {
        const std::lock_guard lock(mutex_);
        if (difference_.empty()) difference_ = std::move(difference);
    }
    throw Difference(this->difference());
}

Position ReplayState::position() const {
    const std::lock_guard lock(mutex_);
    return position_;
}

void ReplayState::setPosition(const Position& position) {
    const std::lock_guard lock(mutex_);
    position_ = position;
}

std::optional<CallEnded> ReplayState::known(const Call& question) const {
    const std::lock_guard lock(mutex_);
    const auto found = known_.find(keyOf(question.object, question.method));
    return found == known_.end() ? std::nullopt : std::optional(found->second);
}

void ReplayState::remember(const CallStarted& call, const CallEnded& end) {
    const std::lock_guard lock(mutex_);
    const std::string& object = call.object;
    const std::string_view method = call.method;
    if (method.starts_with("get_") || method == "QueryInterface") {
        known_[keyOf(object, method)] = end;
    } else if (isFailure(end.result)) {
        return;
    } else if (method.starts_with("put_")) {
        known_[keyOf(object, "get_" + call.method.substr(4))] = {.out = call.in};
    } else if (method == "Close") {
        known_[keyOf(object, "get_IsOpen")] = {.out = kNo};
    } else if (method == "StartCalibration" || method == "StopCalibration") {
        known_[keyOf(object, "get_Calibrating")] = {.out = method == "StopCalibration" ? kNo
                                                                                       : end.out};
    } else if (method == "OpenPort" || (method == "ConnectTo" && end.out != kNo)) {
        // A connection that existed before a failing attempt is kept.
        known_[keyOf(object, "get_IsOpen")] = {.out = end.out};
    }
}

}  // namespace kel::trace
