#include "hosts/trace/model/replay.h"

#include <gtest/gtest.h>

namespace kel::trace {
namespace {

Event started(std::string object, std::string method, Json::Array in = {}, bool compared = true) {
    CallStarted call;
    call.object = std::move(object);
    call.method = std::move(method);
    call.in = std::move(in);
    call.position = {u"a.kel", 2};
    call.isCompared = compared;
    return {0, call};
}

Event ended(Json::Array out = {}, std::uint32_t result = 0) {
    return {0, CallEnded{.result = result, .out = std::move(out)}};
}

Event shown(std::u16string text) {
    return {0, Shown{"serial1", std::move(text)}};
}

// Events get the times 0, 100, 200...
std::vector<Event> timed(std::vector<Event> events) {
    for (std::size_t i = 0; i < events.size(); ++i)
        events[i].time = 100.0 * static_cast<double>(i);
    return events;
}

class TestStage : public Stage {
public:
    void show(const Shown& text) override { screen += text.text; }
    void runScript(const CallbackStarted&) override { run(script); }
    void wait(const std::string&, double started, double recorded) override {
        clock = std::max(clock, started + recorded);
    }
    bool waitUntil(const std::string&, double, const std::function<bool()>& done) override {
        run(loop);
        return done();
    }
    double now() override { return clock; }

    static void run(std::function<void()>& function) {
        if (const auto once = std::exchange(function, nullptr)) once();
    }

    std::u16string screen;
    std::function<void()> script;
    std::function<void()> loop;
    double clock = 5000;
};

class ReplayTest : public testing::Test {
protected:
    void record(std::vector<Event> events) {
        replay = std::make_unique<Replay>(timed(std::move(events)), stage);
    }

    CallEnded call(const std::string& method, Json::Array in = {}, Rule rule = Rule::kCompared) {
        return replay->call({"serial1", method, std::move(in), {u"b.kel", 9}}, rule);
    }

    Json known(const std::string& method, Rule rule = Rule::kState) {
        const auto out = call(method, {}, rule).out;
        return out.empty() ? Json() : out.front();
    }

    void expectDifference(const std::string& text, const std::function<void()>& body) {
        try {
            body();
            ADD_FAILURE() << "no difference: " << text;
        } catch (const Difference& difference) {
            EXPECT_EQ(difference.what(), "The replay leaves its recording" + text);
        }
        EXPECT_EQ(replay->difference(), "The replay leaves its recording" + text);
        EXPECT_THROW(call("Sleep", {1}), Difference) << "the session has ended";
        EXPECT_THROW(call("get_IsOpen", {}, Rule::kState), Difference);
    }

    TestStage stage;
    std::unique_ptr<Replay> replay;
};

TEST_F(ReplayTest, GivesBackResultsTextsAndTimes) {
    record({shown(u"hello "), started("serial1", "Sleep", {150}), shown(u"wor"), shown(u"ld"),
            ended(), started("serial1", "ReadByte", {3}), ended({7, true}, 1)});
    EXPECT_EQ(replay->callsLeft(), 2u);
    call("Sleep", {150});
    EXPECT_EQ(stage.screen, u"hello world");
    EXPECT_EQ(stage.clock, 5300);
    const CallEnded read = call("ReadByte", {3});
    EXPECT_EQ(read.out, (Json::Array{7, true}));
    EXPECT_EQ(read.result, 1u);
    EXPECT_EQ(replay->callsLeft(), 0u);
    expectDifference(" at b.kel, line 9: expected no further call, got serial1.Sleep(1)",
                     [&] { call("Sleep", {1}); });
}

TEST_F(ReplayTest, TheFirstDifferenceEndsIt) {
    record({started("serial1", "WriteString", {u"a\"b", false}), ended({true}),
            started("serial1", "Sleep", {1}), ended()});
    expectDifference(
        " at b.kel, line 9: expected serial1.WriteString(\"a\\\"b\", false) (recorded at a.kel, "
        "line 2), got serial1.WriteString(\"b\", false)",
        [&] {
            call("WriteString", {u"b", false});
        });
    EXPECT_EQ(replay->callsLeft(), 2u);
}

TEST_F(ReplayTest, QuestionsAreAnsweredByWhatIsKnown) {
    record({started("serial1", "OpenPort", {u"COM3"}), ended({1}),
            started("serial1", "get_IsOpen", {}, false), ended({1}),
            started("serial1", "get_BytesInReadBuffer", {}, false), shown(u">"), ended({4}),
            started("serial1", "Close"), ended(), started("serial1", "ConnectTo"), ended({false}),
            started("serial1", "put_Port", {u"serial1"}), ended()});
    EXPECT_EQ(known("get_IsOpen"), Json(1)) << "later knowledge is better than none";
    call("OpenPort", {u"COM3"});
    EXPECT_EQ(known("get_BytesInReadBuffer", Rule::kPolled), Json(4));
    EXPECT_EQ(stage.screen, u">");
    EXPECT_EQ(known("get_BytesInReadBuffer", Rule::kPolled), Json()) << "bytes come once";
    EXPECT_EQ(known("get_IsOpen"), Json(1));
    call("Close");
    EXPECT_EQ(known("get_IsOpen"), Json(false));
    call("ConnectTo");
    EXPECT_EQ(known("get_IsOpen"), Json(false));
    call("put_Port", {u"serial1"});
    EXPECT_EQ(known("get_Port"), Json(u"serial1"));
    EXPECT_EQ(known("get_Never"), Json());
}

TEST_F(ReplayTest, CallsFromTheMessageLoopAreWaitedFor) {
    const std::vector<Event> nested = {started("serial1", "Sleep", {150}),
                                       shown(u"1"),
                                       started("serial1", "SendBreak", {3}),
                                       shown(u"2"),
                                       ended(),
                                       shown(u"3"),
                                       ended()};
    record(nested);
    stage.loop = [&] { call("SendBreak", {3}); };
    call("Sleep", {150});
    EXPECT_EQ(stage.screen, u"123");

    record(nested);
    expectDifference(
        " at b.kel, line 9: expected serial1.SendBreak(3) (recorded at a.kel, line 2), "
        "which did not come",
        [&] { call("Sleep", {150}); });

    record(nested);
    stage.loop = [&] { EXPECT_THROW(call("SendBreak", {4}), Difference); };
    expectDifference(
        " at b.kel, line 9: expected serial1.SendBreak(3) (recorded at a.kel, line 2), "
        "got serial1.SendBreak(4)",
        [&] { call("Sleep", {150}); });
}

TEST_F(ReplayTest, ScriptsOfTheLinkRunAgain) {
    const std::vector<Event> nested = {started("serial1", "RunCommandFile", {u"x"}),
                                       {0, CallbackStarted{"link1", u"#WAIT"}},
                                       started("serial1", "Sleep", {1}),
                                       ended(),
                                       {0, CallbackEnded{}},
                                       ended({true}),
                                       started("serial1", "Sleep", {2}),
                                       ended()};
    record(nested);
    stage.script = [&] { call("Sleep", {1}); };
    EXPECT_EQ(call("RunCommandFile", {u"x"}).out, Json::Array{true});
    call("Sleep", {2});

    record(nested);
    expectDifference(
        " at b.kel, line 9: expected serial1.Sleep(1) (recorded at a.kel, line 2), "
        "which did not come",
        [&] { call("RunCommandFile", {u"x"}); });

    record(nested);
    stage.script = [&] {
        call("Sleep", {1});
        EXPECT_THROW(call("Sleep", {2}), Difference) << "that one is not the script's";
    };
    expectDifference(" at b.kel, line 9: expected no further call, got serial1.Sleep(2)",
                     [&] { call("RunCommandFile", {u"x"}); });
}

TEST_F(ReplayTest, ARecordingMayEndInsideACall) {
    record({started("serial1", "Sleep", {1}), shown(u"x")});
    expectDifference(" at b.kel, line 9: expected no further call, got serial1.Sleep(1)",
                     [&] { call("Sleep", {1}); });
}

}  // namespace
}  // namespace kel::trace
