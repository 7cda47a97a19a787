#pragma once
// What a replay asks of the world around it.

#include <functional>
#include <optional>
#include <string>

#include "hosts/trace/model/event.h"

namespace kel::trace {

// How a call is treated.
enum class Rule {
    kCompared,    // the next recorded call must be the same
    kRepeatable,  // the same, but several in a row count as one: how many depends on timing
    kState,       // not compared: answered by what the recording last told of this property
    kPolled,      // not compared: each recorded answer is given once, then nothing
};

// Called on the threads of the calls. Every member may run the message loop and with it further
// calls.
class Stage {
public:
    virtual ~Stage() = default;

    virtual void show(const Shown& shown) = 0;
    virtual void runScript(const CallbackStarted& callback) = 0;
    // Tells a sink of an event. Nothing where there is no such sink.
    virtual std::optional<EventAnswered> fire(const EventFired& event) = 0;
    // Puts a piece of a file where a call left it. Why that cannot be done; empty when it is.
    virtual std::string leave(const FilePiece& piece) = 0;

    // Lets recorded milliseconds pass since `started` (of now()), for a call on an object; no more
    // once it is over.
    virtual void wait(const std::string& object, double started, double recorded,
                      const std::function<bool()>& isOver) = 0;

    // Runs the message loop of an object's wait until `done`; false when that does not happen
    // within the recorded milliseconds and some patience.
    virtual bool waitUntil(const std::string& object, double recorded,
                           const std::function<bool()>& done) = 0;

    // The same for what another thread is to do, also where there is no message loop.
    virtual bool waitForOthers(const std::string& object, double recorded,
                               const std::function<bool()>& done) = 0;

    // Milliseconds of any one clock.
    virtual double now() = 0;
};

}  // namespace kel::trace
