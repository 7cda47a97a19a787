// What a replay gives back, and where it leaves its recording.
#include "hosts/trace/model/replay.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "hosts/model/unicode.h"
#include "tests/core/models/subject.h"

namespace kel::trace {
namespace {

using test::Subject;
using test::Words;

// "recorded event; event..." begins: "call METHOD ARGUMENTS", "asked METHOD" for one that is not
// compared, "end RESULTS CODE", "shown TEXT", "script", "scriptend", "event ARGUMENTS", "eventend
// ANSWERS" of one that asks where it is answered, each 100 ms after the other.
// "call", "ask" and "poll" call a method; "loop" and "script" make such a line for the next message
// loop and the link's next script or event, "answer" the answer to that. Then "left", "screen",
// "clock".
class ReplayPlayer : public Stage {
public:
    std::string play(Words& words) {
        const std::string act = words.text();
        if (act == "recorded") return record(words.line().substr(act.size()));
        if (act == "answer") return answer_ = EventAnswered{0, arrayIn(words)}, act;
        if (act == "loop" || act == "script")
            return (act == "loop" ? loop_ : script_).push_back(words.line().substr(act.size())),
                   act;
        if (act == "left") return std::to_string(replay_->callsLeft());
        if (act == "clock") return std::to_string(static_cast<int>(clock_));
        if (act == "screen") return screen_;
        const std::string result = call(act, words);
        return std::exchange(nested_, {}) + result;
    }

    void show(const Shown& text) override { screen_ += hosts::toUtf8(text.text); }
    void runScript(const CallbackStarted&) override { run(script_); }
    std::optional<EventAnswered> fire(const EventFired& event) override {
        screen_ += write(Json(event.in));
        run(script_);
        return std::exchange(answer_, {});
    }
    void wait(const std::string&, double started, double recorded) override {
        clock_ = std::max(clock_, started + recorded);
    }
    bool waitUntil(const std::string&, double, const std::function<bool()>& done) override {
        run(loop_);
        return done();
    }
    double now() override { return clock_; }

private:
    std::string record(const std::string& line) {
        std::vector<Event> events;
        std::istringstream parts(line);
        for (std::string part; std::getline(parts, part, ';');) {
            Words words(part);
            events.push_back({100.0 * static_cast<double>(events.size()), eventOf(words)});
        }
        replay_ = std::make_unique<Replay>(events, *this);
        screen_.clear();
        return std::to_string(events.size()) + " events";
    }
    static decltype(Event::what) eventOf(Words& words) {
        const std::string kind = words.text();
        if (kind == "script") return CallbackStarted{"link1", u"#WAIT"};
        if (kind == "scriptend") return CallbackEnded{};
        if (kind == "event") return EventFired{"uploader1", 1, 4, arrayIn(words), true};
        if (kind == "eventend") return EventAnswered{0, arrayIn(words)};
        if (kind == "shown") return Shown{"serial1", Json(words.text()).text()};
        std::vector<std::string> rest = words.all();
        if (kind == "end") {
            CallEnded end;
            if (!rest.empty()) end.out = hosts::readJson(rest[0]).array();
            if (rest.size() > 1) end.result = static_cast<std::uint32_t>(std::stoul(rest[1]));
            return end;
        }
        CallStarted call;
        call.object = "serial1";
        call.method = rest.at(0);
        if (rest.size() > 1) call.in = hosts::readJson(rest[1]).array();
        call.position = {u"a.kel", 2};
        call.isCompared = kind == "call";
        return call;
    }

    static Json::Array arrayIn(Words& words) {
        const std::vector<std::string> rest = words.all();
        return rest.empty() ? Json::Array() : hosts::readJson(rest[0]).array();
    }

    std::string call(const std::string& act, Words& words) {
        Call call{"serial1", words.text(), {}, {u"b.kel", 9}};
        call.in = arrayIn(words);
        const Rule rule = act == "ask"    ? Rule::kState
                          : act == "poll" ? Rule::kPolled
                                          : Rule::kCompared;
        try {
            const CallEnded end = replay_->call(call, rule);
            return write(Json(end.out)) + (end.result ? " " + std::to_string(end.result) : "");
        } catch (const Difference& difference) {
            if (difference.what() != replay_->difference()) return "another difference is kept";
            return difference.what();
        }
    }
    void run(std::vector<std::string>& lines) {
        for (const std::string& line : std::exchange(lines, {})) {
            Words words(line);
            const std::string act = words.text();
            nested_ += "(" + call(act, words) + ") ";
        }
    }

    std::unique_ptr<Replay> replay_;
    std::vector<std::string> loop_, script_;
    std::optional<EventAnswered> answer_;
    std::string screen_, nested_;
    double clock_ = 5000;
};

const Subject kReplay("replay", [] {
    return
        [player = std::make_shared<ReplayPlayer>()](Words& words) { return player->play(words); };
});

}  // namespace
}  // namespace kel::trace
