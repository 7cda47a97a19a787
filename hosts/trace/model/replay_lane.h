#pragma once
// One lane of a recording, as it is replayed.

#include <atomic>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/trace/model/event.h"
#include "hosts/trace/model/replay_stage.h"
#include "hosts/trace/model/replay_state.h"

namespace kel::trace {

// One cursor moves through the events. A compared call moves it to the call's recorded return; what
// lies between is played: texts are shown at their time, scripts that the link ran are run again,
// events are fired, files are left, calls that the host made from its message loop meanwhile are
// waited for, and so are those that other lanes made on the same object.
//
// Used by one thread at a time, save the members that say otherwise.
class ReplayLane {
public:
    // Where a compared call stands in the whole recording and in its lane.
    struct Place {
        std::size_t order;
        const ReplayLane* lane;
        std::size_t index;
    };
    // By the names of objects, in the order of the recording.
    using Places = std::map<std::string, std::vector<Place>, std::less<>>;

    // `places` are those of all lanes, and need not be known yet.
    ReplayLane(ReplayState& state, Stage& stage, const Places& places)
        : state_(state), stage_(stage), places_(places) {}
    ReplayLane(const ReplayLane&) = delete;
    ReplayLane& operator=(const ReplayLane&) = delete;

    // Before all else: the events, with their places in the recording, then once the other one.
    void add(Event event, std::size_t order);
    void completeTo(Places& places);

    // The recorded end of the call. Throws Difference.
    CallEnded compared(const Call& actual, bool isRepeatable);

    // True when the recording has a call that is not compared before the next one that is; the
    // cursor has moved behind it then.
    bool passTo(const Call& actual);

    // Whether such a call comes next: one that is compared, or one before it that is not.
    bool expects(const Call& actual) const;

    // What the recording answers to a question later on. Any thread.
    const CallEnded* laterAnswer(const Call& question) const;

    // Recorded calls that are compared and have not come. Any thread.
    std::size_t callsLeft() const;

    // True when a method of an object was ever called. Any thread.
    bool tells(const std::string& object, std::string_view method) const;

private:
    class Limit;

    void play(std::size_t start, std::size_t end);
    void waitForOthers(std::size_t start, std::size_t at);
    void pause(const std::string& object, double began, double recorded);
    void playScript(std::size_t at, std::size_t end);
    void playEvent(std::size_t at, std::size_t end);
    template <class Work>
    void playCallback(std::size_t at, std::size_t end, Work&& work);
    void playCallOfHost(std::size_t at, double recorded, const std::string& object);
    void passUncompared();
    void passRepeats(const Call& made);
    void passOne();
    void remember(std::size_t ended);
    std::size_t limit() const { return limits_.empty() ? events_.size() : limits_.back(); }
    bool isBorder(std::size_t index) const;
    bool hasPassed(std::size_t index) const { return cursor_ > index; }
    const CallStarted* expected() const;
    [[noreturn]] void differ(const Call* expected, const Call* actual);

    ReplayState& state_;
    Stage& stage_;
    const Places& places_;
    std::vector<Event> events_;
    std::vector<std::size_t> orders_;
    // For each start of a call, script or event its end, and the other way round; the number of
    // events for what has no partner.
    std::vector<std::size_t> partners_;
    std::atomic<std::size_t> cursor_ = 0;
    // Ends of the calls, scripts and events that are being played; the innermost last.
    std::vector<std::size_t> limits_;
    // The last compared call and its end; null before the first.
    const CallStarted* lastCall_ = nullptr;
    const CallEnded* lastEnd_ = nullptr;
};

}  // namespace kel::trace
