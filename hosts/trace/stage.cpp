#include "hosts/trace/stage.h"

#include "hosts/trace/arguments.h"
#include "hosts/trace/model/speed.h"
#include "hosts/trace/waiting.h"

namespace kel::trace {
namespace {

// Beyond the recorded time: a host's timers do not run faster because a replay does.
constexpr double kPatience = 1000;

}  // namespace

void LinkStage::show(const Shown& shown) {
    const HeldObject object = objects_.named(shown.object);
    if (!object) return;
    object->show(fromText(shown.text));
}

void LinkStage::runScript(const CallbackStarted& callback) {
    const HeldObject object = objects_.named(callback.object);
    if (!object) return;
    object->runScript(fromText(callback.script));
}

std::optional<EventAnswered> LinkStage::fire(const EventFired& event) {
    const HeldObject object = objects_.named(event.object);
    if (!object) return std::nullopt;
    return object->fire(event);
}

std::string LinkStage::leave(const FilePiece& piece) {
    const HeldObject object = objects_.named(piece.object);
    return object ? object->leave(piece) : std::string();
}

void LinkStage::wait(const std::string& object, double started, double recorded,
                     const std::function<bool()>& isOver) {
    kel::trace::waitUntil(started + atSpeed(recorded, speed_), runsMessages(object), isOver);
}

bool LinkStage::waitUntil(const std::string& object, double recorded,
                          const std::function<bool()>& done) {
    if (!runsMessages(object)) return done();
    return waitForOthers(object, recorded, done);
}

bool LinkStage::waitForOthers(const std::string& object, double recorded,
                              const std::function<bool()>& done) {
    return kel::trace::waitUntil(now() + recorded + kPatience, runsMessages(object), done);
}

double LinkStage::now() {
    return milliseconds();
}

bool LinkStage::runsMessages(const std::string& object) const {
    const HeldObject traced = objects_.named(object);
    return lanes_.thread() == 0 && traced && traced->runsMessages();
}

}  // namespace kel::trace
