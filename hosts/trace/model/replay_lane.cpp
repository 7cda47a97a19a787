#include "hosts/trace/model/replay_lane.h"

#include <algorithm>

#include "hosts/trace/model/difference.h"

namespace kel::trace {
namespace {

template <class What>
const What* as(const Event& event) {
    return std::get_if<What>(&event.what);
}

bool isSame(const Call& left, const Call& right) {
    return left.object == right.object && left.method == right.method && left.in == right.in;
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

class ReplayLane::Limit {
public:
    Limit(ReplayLane& lane, std::size_t end) : lane_(lane) { lane_.limits_.push_back(end); }
    ~Limit() { lane_.limits_.pop_back(); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    ReplayLane& lane_;
};

void ReplayLane::add(Event event, std::size_t order) {
    events_.push_back(std::move(event));
    orders_.push_back(order);
}

void ReplayLane::completeTo(Places& places) {
    partners_ = partnersIn(events_);
    for (std::size_t i = 0; i < events_.size(); ++i) {
        const auto* call = as<CallStarted>(events_[i]);
        if (call && call->isCompared && partners_[i] < events_.size())
            places[call->object].push_back({orders_[i], this, i});
    }
}

std::size_t ReplayLane::callsLeft() const {
    const auto first =
        events_.begin() + static_cast<std::ptrdiff_t>(std::min(cursor_.load(), events_.size()));
    return static_cast<std::size_t>(std::count_if(first, events_.end(), [](const Event& event) {
        const auto* call = as<CallStarted>(event);
        return call && call->isCompared;
    }));
}

CallEnded ReplayLane::compared(const Call& actual, bool isRepeatable) {
    passUncompared();
    const CallStarted* wanted = expected();
    const bool isNext = wanted && isSame(*wanted, actual);
    if (!isNext && isRepeatable && lastCall_ && isSame(*lastCall_, actual)) return *lastEnd_;
    if (!isNext) differ(wanted, &actual);
    const std::size_t start = cursor_;
    const std::size_t end = partners_[start];
    if (end == events_.size()) differ(nullptr, &actual);
    play(start, end);
    lastCall_ = wanted;
    lastEnd_ = as<CallEnded>(events_[end]);
    if (isRepeatable) passRepeats(*wanted);
    // What was shown meanwhile may have led to calls that differ.
    state_.stopIfDifferent();
    return *as<CallEnded>(events_[end]);
}

const CallEnded* ReplayLane::laterAnswer(const Call& question) const {
    for (std::size_t i = cursor_; i < events_.size(); ++i) {
        const auto* call = as<CallStarted>(events_[i]);
        if (call && isSame(*call, question) && partners_[i] < events_.size())
            return as<CallEnded>(events_[partners_[i]]);
    }
    return nullptr;
}

bool ReplayLane::expects(const Call& actual) const {
    for (std::size_t i = cursor_; i < events_.size(); ++i) {
        const auto* call = as<CallStarted>(events_[i]);
        if (call && isSame(*call, actual)) return true;
        if (call && call->isCompared) return false;
    }
    return false;
}

void ReplayLane::play(std::size_t start, std::size_t end) {
    const Limit limited(*this, end);
    const std::string object = as<CallStarted>(events_[start])->object;
    const double began = stage_.now();
    cursor_ = start + 1;
    while (cursor_ < end) {
        const std::size_t at = cursor_;
        const double recorded = events_[at].time - events_[start].time;
        waitForOthers(start, at);
        if (cursor_ != at) continue;
        if (isBorder(at) && as<CallStarted>(events_[at])) {
            playCallOfHost(at, recorded, object);
            continue;
        }
        pause(object, began, recorded);
        if (cursor_ != at) continue;
        if (as<CallbackStarted>(events_[at])) {
            playScript(at, partners_[at]);
        } else if (as<EventFired>(events_[at])) {
            playEvent(at, partners_[at]);
        } else {
            passOne();
        }
    }
    waitForOthers(start, end);
    pause(object, began, events_[end].time - events_[start].time);
    remember(end);
    cursor_ = std::max(cursor_.load(), end + 1);
}

// What other lanes called on the same object between a call's start and what comes next has to have
// come: a download that was aborted goes on until it is. What nobody answered is not waited for.
void ReplayLane::waitForOthers(std::size_t start, std::size_t at) {
    const std::string& object = as<CallStarted>(events_[start])->object;
    const auto found = places_.find(object);
    if (found == places_.end()) return;
    const double recorded = events_[at].time - events_[start].time;
    auto place = std::ranges::lower_bound(found->second, orders_[start], {}, &Place::order);
    for (; place != found->second.end() && place->order < orders_[at]; ++place) {
        const ReplayLane& other = *place->lane;
        const std::size_t index = place->index;
        if (&other == this || other.hasPassed(index)) continue;
        const bool came = stage_.waitForOthers(
            object, recorded, [&] { return other.hasPassed(index) || state_.isDifferent(); });
        state_.stopIfDifferent();
        if (!came) differ(as<CallStarted>(other.events_[index]), nullptr);
    }
}

void ReplayLane::pause(const std::string& object, double began, double recorded) {
    stage_.wait(object, began, recorded, [this] { return state_.isDifferent(); });
    state_.stopIfDifferent();
}

void ReplayLane::playScript(std::size_t at, std::size_t end) {
    playCallback(at, end, [&] { stage_.runScript(*as<CallbackStarted>(events_[at])); });
}

void ReplayLane::playEvent(std::size_t at, std::size_t end) {
    const auto& event = *as<EventFired>(events_[at]);
    std::optional<EventAnswered> answer;
    playCallback(at, end, [&] { answer = stage_.fire(event); });
    if (!event.isQuestion || !answer) return;
    const auto& recorded = *as<EventAnswered>(events_[end]);
    if (answer->out != recorded.out)
        state_.leave(describeDifference(event, recorded, *answer, state_.position()));
}

// Lets the host do what it did when the link called it.
template <class Work>
void ReplayLane::playCallback(std::size_t at, std::size_t end, Work&& work) {
    {
        const Limit limited(*this, end);
        cursor_ = at + 1;
        work();
        state_.stopIfDifferent();
        passUncompared();
        if (const CallStarted* left = expected()) differ(left, nullptr);
    }
    cursor_ = std::max(cursor_.load(), std::min(end + 1, events_.size()));
}

void ReplayLane::playCallOfHost(std::size_t at, double recorded, const std::string& object) {
    const bool came =
        stage_.waitUntil(object, recorded, [&] { return cursor_ != at || state_.isDifferent(); });
    state_.stopIfDifferent();
    if (!came) differ(as<CallStarted>(events_[at]), nullptr);
}

// Moves to the next compared call, script, or end of what is being played. Events on the way are
// fired; what was cut off is not.
void ReplayLane::passUncompared() {
    const std::size_t last = limit();
    while (cursor_ < last && (!isBorder(cursor_) || as<EventFired>(events_[cursor_]))) {
        const std::size_t end = partners_[cursor_];
        if (as<EventFired>(events_[cursor_]) && end < events_.size() && limits_.size() < kDeepest) {
            playEvent(cursor_, end);
        } else {
            passOne();
        }
    }
    state_.stopIfDifferent();
}

bool ReplayLane::passTo(const Call& actual) {
    const std::size_t last = limit();
    for (std::size_t i = cursor_; i < last && !isBorder(i); ++i) {
        const auto* call = as<CallStarted>(events_[i]);
        if (!call || !isSame(*call, actual) || partners_[i] == events_.size()) continue;
        const std::size_t end = partners_[i];
        remember(end);
        while (cursor_ <= end && cursor_ < last && !isBorder(cursor_))
            passOne();
        return true;
    }
    return false;
}

// Repeated as often as it was, the call has come.
void ReplayLane::passRepeats(const Call& made) {
    for (;;) {
        std::size_t next = cursor_;
        while (next < limit() && !isBorder(next))
            ++next;
        const auto* call = next < limit() ? as<CallStarted>(events_[next]) : nullptr;
        if (!call || !isSame(*call, made) || partners_[next] >= limit()) return;
        while (cursor_ <= partners_[next])
            passOne();
    }
}

// The cursor moves first, since what is shown may lead to further calls.
void ReplayLane::passOne() {
    const std::size_t at = cursor_++;
    if (as<CallEnded>(events_[at])) remember(at);
    if (const auto* shown = as<Shown>(events_[at])) stage_.show(*shown);
    const auto* piece = as<FilePiece>(events_[at]);
    if (!piece) return;
    const std::string reason = piece->fingerprint ? "the recording does not hold its " +
                                                        std::to_string(piece->size) + " bytes"
                                                  : stage_.leave(*piece);
    if (!reason.empty()) state_.leave(describeDifference(*piece, reason, state_.position()));
}

void ReplayLane::remember(std::size_t ended) {
    if (partners_[ended] == events_.size()) return;
    const auto* call = as<CallStarted>(events_[partners_[ended]]);
    const auto* end = as<CallEnded>(events_[ended]);
    if (call && end) state_.remember(*call, *end);
}

bool ReplayLane::isBorder(std::size_t index) const {
    const auto* call = as<CallStarted>(events_[index]);
    return (call && call->isCompared) || as<CallbackStarted>(events_[index]) ||
           as<EventFired>(events_[index]);
}

const CallStarted* ReplayLane::expected() const {
    return cursor_ < limit() ? as<CallStarted>(events_[cursor_]) : nullptr;
}

void ReplayLane::differ(const Call* expected, const Call* actual) {
    state_.leave(
        describeDifference(expected, actual, actual ? actual->position : state_.position()));
}

bool ReplayLane::tells(const std::string& object, std::string_view method) const {
    return std::ranges::any_of(events_, [&](const Event& event) {
        const auto* call = as<CallStarted>(event);
        return call && call->object == object && call->method == method;
    });
}

}  // namespace kel::trace
