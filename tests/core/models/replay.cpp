// What a replay gives back, and where it leaves its recording.
#include "hosts/trace/model/replay.h"

#include <algorithm>
#include <map>
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
// ANSWERS" of one that asks where it is answered, "leaves NAME SIZE OFFSET BYTES" of a file and
// "unheld NAME SIZE", each 100 ms after the other; "aside" before it: in another lane.
// "call", "repeat", "ask" and "poll" call a method, after "aside" on another thread; "loop",
// "script" and "meanwhile" make such a line for the next message loop, the link's next script or
// event and the next wait for another thread, "answer" the answer to an event, "full" a disk
// without room. Then "left", "screen", "clock".
class ReplayPlayer : public Stage {
public:
    std::string play(Words& words) {
        const std::string act = words.text();
        if (act == "recorded") return record(words.line().substr(act.size()));
        if (act == "answer") return answer_ = EventAnswered{0, arrayIn(words)}, act;
        const std::map<std::string, std::vector<std::string>*> later = {
            {"loop", &loop_}, {"script", &script_}, {"meanwhile", &others_}};
        if (const auto found = later.find(act); found != later.end())
            return found->second->push_back(words.line().substr(act.size())), act;
        if (act == "full") return isFull_ = true, act;
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
    std::string leave(const FilePiece& piece) override {
        screen_ += "[" + hosts::toUtf8(piece.name) + "@" + std::to_string(piece.offset) + " " +
                   piece.bytes + "]";
        return isFull_ ? "the disk is full" : "";
    }
    void wait(const std::string&, double started, double recorded,
              const std::function<bool()>&) override {
        clock_ = std::max(clock_, started + recorded);
    }
    bool waitUntil(const std::string&, double, const std::function<bool()>& done) override {
        run(loop_);
        return done();
    }
    bool waitForOthers(const std::string&, double, const std::function<bool()>& done) override {
        run(others_);
        return done();
    }
    double now() override { return clock_; }

private:
    std::string record(const std::string& line) {
        std::vector<Event> events;
        std::istringstream parts(line);
        for (std::string part; std::getline(parts, part, ';');) {
            Words words(part);
            const std::string first = words.text();
            const bool isAside = first == "aside";
            const std::string kind = isAside ? words.text() : first;
            events.push_back(
                {100.0 * static_cast<double>(events.size()), eventOf(kind, words), isAside});
        }
        replay_ = std::make_unique<Replay>(events, *this);
        screen_.clear();
        return std::to_string(events.size()) + " events";
    }
    static decltype(Event::what) eventOf(const std::string& kind, Words& words) {
        if (kind == "script") return CallbackStarted{"link1", u"#WAIT"};
        if (kind == "scriptend") return CallbackEnded{};
        if (kind == "event") return EventFired{"uploader1", 1, 4, arrayIn(words), true};
        if (kind == "eventend") return EventAnswered{0, arrayIn(words)};
        if (kind == "shown") return Shown{"serial1", Json(words.text()).text()};
        std::vector<std::string> rest = words.all();
        if (kind == "leaves" || kind == "unheld") {
            FilePiece piece{"serial1", Json(rest.at(0)).text(), std::stoll(rest.at(1))};
            if (kind == "unheld") return piece.fingerprint = "0", piece;
            piece.offset = std::stoll(rest.at(2));
            piece.bytes = rest.at(3);
            return piece;
        }
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

    std::string call(const std::string& given, Words& words) {
        const bool isAside = given == "aside";
        const std::string act = isAside ? words.text() : given;
        Call call{"serial1", words.text(), {}, {u"b.kel", 9}};
        call.in = arrayIn(words);
        const Rule rule = act == "ask"      ? Rule::kState
                          : act == "poll"   ? Rule::kPolled
                          : act == "repeat" ? Rule::kRepeatable
                                            : Rule::kCompared;
        try {
            const CallEnded end = replay_->call(call, rule, isAside ? 7 : 0);
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
    std::vector<std::string> loop_, script_, others_;
    bool isFull_ = false;
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
