#pragma once
// Compares the calls of a run with a recording and plays what the recording tells.

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/trace/model/event.h"

namespace kel::trace {

// How a call is treated.
enum class Rule {
    kCompared,  // the next recorded call must be the same
    kState,     // not compared: answered by what the recording last told of this property
    kPolled,    // not compared: each recorded answer is given once, then nothing
};

// What a replay does to the world. Every member may run the message loop and with it further calls.
class Stage {
public:
    virtual ~Stage() = default;

    virtual void show(const Shown& shown) = 0;
    virtual void runScript(const CallbackStarted& callback) = 0;
    // Tells a sink of an event. Nothing where there is no such sink.
    virtual std::optional<EventAnswered> fire(const EventFired& event) = 0;

    // Lets recorded milliseconds pass since `started` (of now()), for a call on an object.
    virtual void wait(const std::string& object, double started, double recorded) = 0;

    // Runs the message loop of an object's wait until `done`; false when that does not happen
    // within the recorded milliseconds and some patience.
    virtual bool waitUntil(const std::string& object, double recorded,
                           const std::function<bool()>& done) = 0;

    // Milliseconds of any one clock.
    virtual double now() = 0;
};

// Thrown by the first call that differs from the recording, and by all later ones.
class Difference : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One cursor moves through the events. A compared call moves it to the call's recorded return; what
// lies between is played: texts are shown at their time, scripts that the link ran are run again,
// events are fired, calls that the host made from its message loop meanwhile are waited for.
class Replay {
public:
    Replay(std::vector<Event> events, Stage& stage);

    // The recorded end of the call. Throws Difference.
    CallEnded call(const Call& actual, Rule rule);

    // Recorded calls that are compared and have not come.
    std::size_t callsLeft() const;

    // Empty while there is none.
    const std::string& difference() const { return difference_; }

    // True when a method of an object was ever called.
    bool tells(const std::string& object, std::string_view method) const;

private:
    class Limit;

    CallEnded compared(const Call& actual);
    CallEnded uncompared(const Call& actual, Rule rule);
    void play(std::size_t start, std::size_t end);
    void playScript(std::size_t at, std::size_t end);
    void playEvent(std::size_t at, std::size_t end);
    template <class Work>
    void playCallback(std::size_t at, std::size_t end, Work&& work);
    void playCallOfHost(std::size_t at, double recorded, const std::string& object);
    void passUncompared();
    bool passTo(const Call& actual);
    void passOne();
    void remember(std::size_t ended);
    bool isBorder(std::size_t index) const;
    const CallStarted* expected() const;
    [[noreturn]] void differ(const Call* expected, const Call* actual);
    [[noreturn]] void leave(std::string difference);
    void stopIfDifferent() const;

    std::vector<Event> events_;
    Stage& stage_;
    // For each start of a call, script or event its end, and the other way round; the number of
    // events for what has no partner.
    std::vector<std::size_t> partners_;
    std::size_t cursor_ = 0;
    // Ends of the calls, scripts and events that are being played; the innermost last.
    std::vector<std::size_t> limits_;
    // Last known answers, by object and method.
    std::map<std::string, CallEnded, std::less<>> known_;
    Position now_;
    std::string difference_;
};

}  // namespace kel::trace
