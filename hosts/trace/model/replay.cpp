#include "hosts/trace/model/replay.h"

#include <algorithm>

#include "hosts/trace/model/difference.h"

namespace kel::trace {
namespace {

template <class What>
const What* as(const Event& event) {
    return std::get_if<What>(&event.what);
}

std::string keyOf(const std::string& object, std::string_view method) {
    return object + "." + std::string(method);
}

bool isSame(const Call& left, const Call& right) {
    return left.object == right.object && left.method == right.method && left.in == right.in;
}

// The answer of a member that says no.
const Json::Array kNo{false};

bool isFailure(std::uint32_t result) {
    return (result & 0x80000000u) != 0;
}

bool isStart(const Event& event) {
    return as<CallStarted>(event) || as<CallbackStarted>(event) || as<EventFired>(event);
}

bool isEndOf(const Event& start, const Event& event) {
    return (as<CallStarted>(start) && as<CallEnded>(event)) ||
           (as<CallbackStarted>(start) && as<CallbackEnded>(event)) ||
           (as<EventFired>(start) && as<EventAnswered>(event));
}

// Events nest no deeper where they are fired before a call that comes early.
constexpr std::size_t kDeepest = 200;

// Calls, scripts and events nest, so each end belongs to the innermost start that is still open.
std::vector<std::size_t> partnersIn(const std::vector<Event>& events) {
    std::vector<std::size_t> partners(events.size(), events.size());
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < events.size(); ++i) {
        if (isStart(events[i])) open.push_back(i);
        if (open.empty() || !isEndOf(events[open.back()], events[i])) continue;
        partners[i] = open.back();
        partners[open.back()] = i;
        open.pop_back();
    }
    return partners;
}

}  // namespace

class Replay::Limit {
public:
    Limit(Replay& replay, std::size_t end) : replay_(replay) { replay_.limits_.push_back(end); }
    ~Limit() { replay_.limits_.pop_back(); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    Replay& replay_;
};

Replay::Replay(std::vector<Event> events, Stage& stage)
    : events_(std::move(events)), stage_(stage), partners_(partnersIn(events_)) {}

CallEnded Replay::call(const Call& actual, Rule rule) {
    stopIfDifferent();
    now_ = actual.position;
    return rule == Rule::kCompared ? compared(actual) : uncompared(actual, rule);
}

std::size_t Replay::callsLeft() const {
    const auto first =
        events_.begin() + static_cast<std::ptrdiff_t>(std::min(cursor_, events_.size()));
    return static_cast<std::size_t>(std::count_if(first, events_.end(), [](const Event& event) {
        const auto* call = as<CallStarted>(event);
        return call && call->isCompared;
    }));
}

CallEnded Replay::compared(const Call& actual) {
    passUncompared();
    const CallStarted* wanted = expected();
    if (!wanted || !isSame(*wanted, actual)) differ(wanted, &actual);
    const std::size_t start = cursor_;
    const std::size_t end = partners_[start];
    if (end == events_.size()) differ(nullptr, &actual);
    play(start, end);
    return std::get<CallEnded>(events_[end].what);
}

// Answers from the events up to the next compared call when the same call is there, else from what
// is known.
CallEnded Replay::uncompared(const Call& actual, Rule rule) {
    const bool isRecordedHere = passTo(actual);
    stopIfDifferent();
    if (!isRecordedHere && rule == Rule::kPolled) return {};

    const auto known = known_.find(keyOf(actual.object, actual.method));
    if (known != known_.end()) return known->second;
    for (std::size_t i = cursor_; i < events_.size(); ++i) {
        const auto* call = as<CallStarted>(events_[i]);
        if (call && isSame(*call, actual) && partners_[i] < events_.size()) {
            return std::get<CallEnded>(events_[partners_[i]].what);
        }
    }
    return {};
}

void Replay::play(std::size_t start, std::size_t end) {
    const Limit limit(*this, end);
    const std::string object = std::get<CallStarted>(events_[start].what).object;
    const double began = stage_.now();
    cursor_ = start + 1;
    while (cursor_ < end) {
        const std::size_t at = cursor_;
        const double recorded = events_[at].time - events_[start].time;
        if (isBorder(at) && as<CallStarted>(events_[at])) {
            playCallOfHost(at, recorded, object);
            continue;
        }
        stage_.wait(object, began, recorded);
        stopIfDifferent();
        if (cursor_ != at) continue;
        if (as<CallbackStarted>(events_[at])) {
            playScript(at, partners_[at]);
        } else if (as<EventFired>(events_[at])) {
            playEvent(at, partners_[at]);
        } else {
            passOne();
        }
    }
    stage_.wait(object, began, events_[end].time - events_[start].time);
    stopIfDifferent();
    remember(end);
    cursor_ = std::max(cursor_, end + 1);
}

void Replay::playScript(std::size_t at, std::size_t end) {
    playCallback(at, end, [&] { stage_.runScript(std::get<CallbackStarted>(events_[at].what)); });
}

void Replay::playEvent(std::size_t at, std::size_t end) {
    const auto& event = std::get<EventFired>(events_[at].what);
    std::optional<EventAnswered> answer;
    playCallback(at, end, [&] { answer = stage_.fire(event); });
    if (!event.isQuestion || !answer) return;
    const auto& recorded = std::get<EventAnswered>(events_[end].what);
    if (answer->out != recorded.out) leave(describeDifference(event, recorded, *answer, now_));
}

// Lets the host do what it did when the link called it.
template <class Work>
void Replay::playCallback(std::size_t at, std::size_t end, Work&& work) {
    {
        const Limit limit(*this, end);
        cursor_ = at + 1;
        work();
        stopIfDifferent();
        passUncompared();
        if (const CallStarted* left = expected()) differ(left, nullptr);
    }
    cursor_ = std::max(cursor_, std::min(end + 1, events_.size()));
}

void Replay::playCallOfHost(std::size_t at, double recorded, const std::string& object) {
    const bool came =
        stage_.waitUntil(object, recorded, [&] { return cursor_ != at || !difference_.empty(); });
    stopIfDifferent();
    if (!came) differ(&std::get<CallStarted>(events_[at].what), nullptr);
}

// Moves to the next compared call, script, or end of what is being played. Events on the way are
// fired; what was cut off is not.
void Replay::passUncompared() {
    const std::size_t limit = limits_.empty() ? events_.size() : limits_.back();
    while (cursor_ < limit && (!isBorder(cursor_) || as<EventFired>(events_[cursor_]))) {
        const std::size_t end = partners_[cursor_];
        if (as<EventFired>(events_[cursor_]) && end < events_.size() && limits_.size() < kDeepest) {
            playEvent(cursor_, end);
        } else {
            passOne();
        }
    }
    stopIfDifferent();
}

// True when the call was found before the next border; the cursor stands behind its end then.
bool Replay::passTo(const Call& actual) {
    const std::size_t limit = limits_.empty() ? events_.size() : limits_.back();
    for (std::size_t i = cursor_; i < limit && !isBorder(i); ++i) {
        const auto* call = as<CallStarted>(events_[i]);
        if (!call || !isSame(*call, actual) || partners_[i] == events_.size()) continue;
        const std::size_t end = partners_[i];
        remember(end);
        while (cursor_ <= end && cursor_ < limit && !isBorder(cursor_))
            passOne();
        return true;
    }
    return false;
}

// The cursor moves first, since what is shown may lead to further calls.
void Replay::passOne() {
    const std::size_t at = cursor_++;
    if (as<CallEnded>(events_[at])) remember(at);
    if (const auto* shown = as<Shown>(events_[at])) stage_.show(*shown);
}

// What the end of a call tells of later questions.
void Replay::remember(std::size_t ended) {
    if (partners_[ended] == events_.size()) return;
    const auto* call = as<CallStarted>(events_[partners_[ended]]);
    const auto* end = as<CallEnded>(events_[ended]);
    if (!call || !end) return;
    const std::string_view method = call->method;
    if (method.starts_with("get_")) {
        known_[keyOf(call->object, method)] = *end;
    } else if (isFailure(end->result)) {
        return;
    } else if (method.starts_with("put_")) {
        known_[keyOf(call->object, "get_" + call->method.substr(4))] = {.out = call->in};
    } else if (method == "Close") {
        known_[keyOf(call->object, "get_IsOpen")] = {.out = kNo};
    } else if (method == "StartCalibration" || method == "StopCalibration") {
        known_[keyOf(call->object, "get_Calibrating")] = {
            .out = method == "StopCalibration" ? kNo : end->out};
    } else if (method == "OpenPort" || (method == "ConnectTo" && end->out != kNo)) {
        // A connection that existed before a failing attempt is kept.
        known_[keyOf(call->object, "get_IsOpen")] = {.out = end->out};
    }
}

bool Replay::isBorder(std::size_t index) const {
    const auto* call = as<CallStarted>(events_[index]);
    return (call && call->isCompared) || as<CallbackStarted>(events_[index]) ||
           as<EventFired>(events_[index]);
}

const CallStarted* Replay::expected() const {
    const std::size_t limit = limits_.empty() ? events_.size() : limits_.back();
    return cursor_ < limit ? as<CallStarted>(events_[cursor_]) : nullptr;
}

void Replay::differ(const Call* expected, const Call* actual) {
    leave(describeDifference(expected, actual, actual ? actual->position : now_));
}

void Replay::leave(std::string difference) {
    difference_ = std::move(difference);
    throw Difference(difference_);
}

bool Replay::tells(const std::string& object, std::string_view method) const {
    return std::ranges::any_of(events_, [&](const Event& event) {
        const auto* call = as<CallStarted>(event);
        return call && call->object == object && call->method == method;
    });
}

void Replay::stopIfDifferent() const {
    if (!difference_.empty()) throw Difference(difference_);
}

}  // namespace kel::trace
