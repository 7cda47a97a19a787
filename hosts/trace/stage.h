#pragma once
// What a replay does to the traced objects and with the time.

#include "hosts/trace/lanes.h"
#include "hosts/trace/model/replay.h"
#include "hosts/trace/object_table.h"

namespace kel::trace {

class LinkStage final : public Stage {
public:
    LinkStage(const ObjectTable& objects, const Lanes& lanes) : objects_(objects), lanes_(lanes) {}

    void setSpeed(double speed) { speed_ = speed; }

    void show(const Shown& shown) override;
    void runScript(const CallbackStarted& callback) override;
    std::optional<EventAnswered> fire(const EventFired& event) override;
    std::string leave(const FilePiece& piece) override;
    void wait(const std::string& object, double started, double recorded,
              const std::function<bool()>& isOver) override;
    bool waitUntil(const std::string& object, double recorded,
                   const std::function<bool()>& done) override;
    bool waitForOthers(const std::string& object, double recorded,
                       const std::function<bool()>& done) override;
    double now() override;

private:
    bool runsMessages(const std::string& object) const;

    const ObjectTable& objects_;
    const Lanes& lanes_;
    double speed_ = 0;
};

}  // namespace kel::trace
