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
    TracedObject* object = objects_.named(shown.object);
    if (!object) return;
    const com::ComPtr<IUnknown> alive = object->wrapper();
    object->show(fromText(shown.text));
}

void LinkStage::runScript(const CallbackStarted& callback) {
    TracedObject* object = objects_.named(callback.object);
    if (!object) return;
    const com::ComPtr<IUnknown> alive = object->wrapper();
    object->runScript(fromText(callback.script));
}

std::optional<EventAnswered> LinkStage::fire(const EventFired& event) {
    TracedObject* object = objects_.named(event.object);
    if (!object) return std::nullopt;
    const com::ComPtr<IUnknown> alive = object->wrapper();
    return object->fire(event);
}

void LinkStage::wait(const std::string& object, double started, double recorded) {
    kel::trace::waitUntil(started + atSpeed(recorded, speed_), runsMessages(object), {});
}

bool LinkStage::waitUntil(const std::string& object, double recorded,
                          const std::function<bool()>& done) {
    if (!runsMessages(object)) return done();
    return kel::trace::waitUntil(now() + recorded + kPatience, true, done);
}

double LinkStage::now() {
    return milliseconds();
}

bool LinkStage::runsMessages(const std::string& object) const {
    const TracedObject* traced = objects_.named(object);
    return traced && traced->runsMessages();
}

}  // namespace kel::trace
