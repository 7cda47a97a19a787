#include "hosts/trace/model/replay.h"
#include "hosts/trace/model/trace_text.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {
namespace {

using trace::CallStarted;
using trace::Event;

constexpr int kDeepest = 8;

// A host that makes the recorded calls, in their order, wherever it may make one.
class RecordedHost final : public trace::Stage {
public:
    explicit RecordedHost(const std::vector<Event>& events) : replay_(events, *this) {
        for (const Event& event : events) {
            if (const auto* call = std::get_if<CallStarted>(&event.what))
                calls_.emplace_back(*call, event.lane);
        }
    }

    void run() {
        while (next_ < calls_.size())
            step();
        require(replay_.difference().empty() != hasDiffered_, "a difference is kept");
    }

    void show(const trace::Shown&) override { step(); }
    void runScript(const trace::CallbackStarted& callback) override {
        for (std::size_t i = 0; i < callback.script.size(); ++i)
            step();
    }
    std::optional<trace::EventAnswered> fire(const trace::EventFired& event) override {
        for (std::int64_t i = 0; i < event.sink; ++i)
            step();
        return trace::EventAnswered{0, event.in};
    }
    std::string leave(const trace::FilePiece& piece) override {
        require(!piece.fingerprint, "only what is held is left");
        step();
        return piece.size < 0 ? "no file is as small" : "";
    }
    void wait(const std::string&, double, double, const std::function<bool()>&) override {}
    bool waitUntil(const std::string&, double, const std::function<bool()>& done) override {
        step();
        return done();
    }
    bool waitForOthers(const std::string& what, double time,
                       const std::function<bool()>& done) override {
        return waitUntil(what, time, done);
    }
    double now() override { return 0; }

private:
    void step() {
        if (next_ == calls_.size() || depth_ == kDeepest) return;
        const auto& [call, lane] = calls_[next_++];
        const bool isEven = call.number % 2 == 0;
        const trace::Rule rule = call.isCompared
                                     ? (isEven ? trace::Rule::kCompared : trace::Rule::kRepeatable)
                                     : (isEven ? trace::Rule::kState : trace::Rule::kPolled);
        ++depth_;
        try {
            replay_.call(call, rule, static_cast<std::uint32_t>(lane));
            require(!hasDiffered_, "no call is answered after a difference");
        } catch (const trace::Difference& difference) {
            require(std::string_view(difference.what()) == replay_.difference().c_str(),
                    "the first difference stays");
            hasDiffered_ = true;
        }
        --depth_;
        require(replay_.callsLeft() <= left_, "a recorded call does not come back");
        left_ = replay_.callsLeft();
    }

    trace::Replay replay_;
    std::vector<std::pair<CallStarted, std::int64_t>> calls_;  // with their lanes
    std::size_t next_ = 0;
    std::size_t left_ = static_cast<std::size_t>(-1);
    int depth_ = 0;
    bool hasDiffered_ = false;
};

}  // namespace

void replayAnything(std::string_view input) {
    std::vector<Event> events;
    try {
        events = trace::readTrace(input);
    } catch (const std::invalid_argument&) {
        return;
    }
    std::string text = trace::headerLine("") + "\n";
    for (const Event& event : events)
        text += trace::toLine(event) + "\n";
    std::string again = trace::headerLine("") + "\n";
    for (const Event& event : trace::readTrace(text))
        again += trace::toLine(event) + "\n";
    require(again == text, "what is written is read");

    RecordedHost(events).run();
}

}  // namespace kel::fuzz
