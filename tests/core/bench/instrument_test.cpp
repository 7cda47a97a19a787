#include "bench/instrument/instrument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace kel::bench {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr std::string_view kBanner = "\r\nKel virtual field instrument, firmware 1.0\r\n>";
constexpr std::string_view kThreeLineEnds = "\r\r\r";

// An instrument with a clock that stands unless a test moves it.
class Bench {
public:
    explicit Bench(InstrumentOptions options = {}) : instrument(std::move(options)) {}

    std::string say(std::string_view bytes) {
        instrument.feed(bytes, now);
        return instrument.take(now);
    }

    // The answer to a command, without its echo and the prompt.
    std::string ask(const std::string& command) {
        const auto reply = say(command + "\r");
        const auto echo = command + "\r\n";
        EXPECT_TRUE(reply.starts_with(echo)) << reply;
        EXPECT_TRUE(reply.ends_with("\r\n>")) << reply;
        if (reply.size() < echo.size() + 3) return reply;
        return reply.substr(echo.size(), reply.size() - echo.size() - 3);
    }

    std::string later(Duration pause) {
        now += pause;
        return instrument.take(now);
    }

    Duration now{0};
    Instrument instrument;
};

InstrumentOptions atMidday() {
    InstrumentOptions options;
    options.clock = std::chrono::local_days{std::chrono::year{2024} / 3 / 9} + 12h;
    return options;
}

struct Dialogue {
    const char* command;
    const char* answer;
};

TEST(InstrumentCommands, AreAnswered) {
    Bench bench(atMidday());
    const Dialogue dialogues[] = {
        {"sernum", "Serial Number: D123."},
        {"SerNum", "Serial Number: D123."},
        {" get \t interval ", "600"},
        {"set INTERVAL 0900", "OK"},
        {"get interval", "900"},
        {"set interval 1.5x", "ERROR: bad value, interval takes 1 to 86400"},
        {"set interval 86401", "ERROR: bad value, interval takes 1 to 86400"},
        {"set interval nan", "ERROR: bad value, interval takes 1 to 86400"},
        {"set interval", "ERROR: missing value"},
        {"get interval", "900"},
        {"set depth 5", "ERROR: unknown setting"},
        {"get", "ERROR: missing name"},
        {"set recorder OFF", "OK"},
        {"get recorder", "off"},
        {"set station \"North mole 7\"", "OK"},
        {"get station", "North mole 7"},
        {"set station a>b", "ERROR: bad value, station takes 1 to 32 characters"},
        {"pressoffset set  -1.250", "OK"},
        {"pressoffset", "Pressure Offset: -1.250 dbar"},
        {"pressoffset put 1", "ERROR: set expected"},
        {"clock", "2024/03/09 12:00:00"},
        {"clock set 2024/02/29 23:59:59", "OK"},
        {"clock", "2024/02/29 23:59:59"},
        {"clock set 2023/02/29 00:00:00", "ERROR: bad value, clock takes YYYY/MM/DD HH:MM:SS"},
        {"clock set 2024/02/29T00:00:00", "ERROR: bad value, clock takes YYYY/MM/DD HH:MM:SS"},
        {"sample", "2024/02/29 23:59:59 8.882 dbar 123.4 1.5 -0.8 deg"},
        {"set declination -130", "OK"},
        {"sample", "2024/02/29 23:59:59 8.882 dbar 353.4 1.5 -0.8 deg"},
        {"defaults", "OK"},
        {"get interval", "600"},
        {"0M!", "ERROR: unknown command"},
        {"?!", "ERROR: unknown command"},
        {"SLEEPING", "ERROR: unknown command"},
    };
    for (const auto& [command, answer] : dialogues)
        EXPECT_EQ(bench.ask(command), answer) << command;
}

TEST(InstrumentCommands, DeploymentLocksTheSettingsAndRecords) {
    Bench bench(atMidday());
    const Dialogue before[] = {
        {"halt", "ERROR: not deployed"},
        {"set average 601", "OK"},
        {"deploy", "ERROR: the average is longer than the interval"},
        {"set burst 1200", "OK"},
        {"set start 2024/03/09 11:59:59", "OK"},
        {"deploy", "ERROR: the start has passed"},
        {"set start 2024/03/09 12:10:00", "OK"},
        {"deploy", "OK"},
        {"deploy", "ERROR: deployed, halt first"},
        {"set interval 5", "ERROR: deployed, halt first"},
        {"defaults", "ERROR: deployed, halt first"},
        {"erase", "ERROR: deployed, halt first"},
        {"status", "Station: unnamed\r\nState: deployed, begins 2024/03/09 12:10:00\r\nRecords: 0"},
    };
    for (const auto& [command, answer] : before)
        EXPECT_EQ(bench.ask(command), answer) << command;

    bench.later(10min + 25min);
    EXPECT_EQ(bench.ask("status"),
              "Station: unnamed\r\nState: deployed since 2024/03/09 12:10:00\r\nRecords: 2");
    EXPECT_EQ(bench.ask("halt"), "OK");
    bench.later(1h);
    EXPECT_EQ(bench.ask("status"), "Station: unnamed\r\nState: idle\r\nRecords: 2");
    EXPECT_EQ(bench.say("erase\r"), "erase\r\n");
    EXPECT_EQ(bench.later(2s), "OK\r\n>");
    EXPECT_TRUE(bench.ask("status").ends_with("Records: 0"));
}

TEST(InstrumentCommands, OnlySavedSettingsOutliveThePower) {
    InstrumentOptions options;
    std::string kept;
    bool full = false;
    options.store = [&](const InstrumentSetup& setup) {
        if (!full) kept = setup.toText();
        return !full;
    };
    Bench bench(options);
    bench.ask("set station Pier");
    bench.ask("savesetup");
    bench.ask("set station Other");
    EXPECT_EQ(InstrumentSetup::fromText(kept).get("station"), "Pier");
    full = true;
    EXPECT_EQ(bench.ask("savesetup"), "ERROR: the setup could not be saved");
    bench.ask("restoresetup");
    EXPECT_EQ(bench.ask("get station"), "Pier");

    EXPECT_EQ(InstrumentSetup::fromText(InstrumentSetup().toText()), InstrumentSetup());
    EXPECT_THROW(InstrumentSetup::fromText("interval=5\nrubbish\n"), CommandError);
    EXPECT_THROW(InstrumentSetup::fromText("interval=0"), CommandError);
}

TEST(InstrumentLine, PromptAndAcknowledgementAreNeverPartOfOtherAnswers) {
    Bench bench;
    for (const char* command : {"help", "ver", "sernum", "show", "status", "sample", "rubbish"}) {
        const auto answer = bench.ask(command);
        EXPECT_EQ(answer.find('>'), std::string::npos) << answer;
        EXPECT_EQ(answer.find("OK"), std::string::npos) << answer;
    }
}

TEST(InstrumentLine, EditsAndEndsLines) {
    const struct {
        std::string received;
        std::string sent;
    } cases[] = {
        {"\r", "\r\n>"},
        {" \r", " \r\n>"},
        {"\r\n\r\n", "\r\n>\r\n>"},
        {"\n\n", "\r\n>\r\n>"},
        {"\n\r", "\r\n>\r\n>"},
        {"seX\br\x7frnum\r", "seX\b \br\b \brnum\r\nSerial Number: D123.\r\n>"},
        {"\b\x1b\r", "\r\n>"},
        {std::string(257, 'x') + "\r", std::string(257, 'x') + "\r\nERROR: line too long\r\n>"},
        {"half\0"s, std::string(kBanner)},
    };
    for (const auto& [received, sent] : cases) {
        EXPECT_EQ(Bench().say(received), sent) << received;
        Bench split;
        std::string pieces;
        for (const char byte : received)
            pieces += split.say({&byte, 1});
        EXPECT_TRUE(pieces.ends_with(sent)) << received;
        EXPECT_EQ(split.ask("get rate"), "2") << "after " << received;
    }
}

TEST(InstrumentLine, SleepsUntilABreakOrThreeLineEnds) {
    for (const auto& waker : {std::string(kThreeLineEnds), "\r\n\r\n\r\n"s, "x\0"s}) {
        Bench bench;
        EXPECT_EQ(bench.say("sleep\r\nsernum\r\r"), "sleep\r\nOK\r\n");
        EXPECT_EQ(bench.later(1h), "");
        EXPECT_EQ(bench.instrument.nextDue(), std::nullopt);
        EXPECT_EQ(bench.say("x" + waker), "");
        EXPECT_EQ(bench.later(299ms), "");
        EXPECT_EQ(bench.say("lost\r"), "");
        EXPECT_EQ(bench.instrument.nextDue(), bench.now + 1ms);
        EXPECT_EQ(bench.later(1ms), kBanner);
        EXPECT_EQ(bench.ask("get rate"), "2");
    }
}

TEST(InstrumentLine, FallsAsleepWhenIdle) {
    Bench bench;
    bench.ask("set timeout 30");
    bench.later(29s);
    EXPECT_EQ(bench.ask("get timeout"), "30");
    bench.say("half");
    EXPECT_EQ(bench.instrument.nextDue(), bench.now + 30s);
    bench.later(30s);
    EXPECT_TRUE(bench.instrument.asleep());
    bench.say(kThreeLineEnds);
    EXPECT_EQ(bench.later(300ms), kBanner);
    EXPECT_EQ(bench.ask("get rate"), "2");
}

TEST(InstrumentLine, MonitorsUntilALineEndOrABreak) {
    for (const auto& [ender, reply] :
         {std::pair{"x\r"s, "\r\n>"s}, std::pair{"\0"s, std::string(kBanner)}}) {
        Bench bench;
        EXPECT_EQ(bench.say("monitor\r"), "monitor\r\nOK\r\n");
        EXPECT_EQ(bench.later(999ms), "");
        const auto samples = bench.later(2001ms);
        EXPECT_EQ(std::count(samples.begin(), samples.end(), '\n'), 3) << samples;
        EXPECT_EQ(bench.say(ender), reply);
        EXPECT_EQ(bench.later(1h), "");
    }
}

TEST(InstrumentFaults, SlowAnswersComeOneAfterTheOther) {
    InstrumentOptions options;
    options.slow = 2500ms;
    Bench bench(options);
    EXPECT_EQ(bench.say("ver\rget rate\r"), "ver\r\n");
    EXPECT_EQ(bench.later(2499ms), "");
    EXPECT_TRUE(bench.later(1ms).ends_with(">get rate\r\n"));
    EXPECT_EQ(bench.later(2499ms), "");
    bench.instrument.dropLine();
    EXPECT_EQ(bench.later(1ms), "");
    EXPECT_EQ(bench.say("ver\r\0"s), kBanner) << "a break drops the answer under way";
}

TEST(InstrumentFaults, GarblesTheSameBytesForTheSameSeed) {
    InstrumentOptions options;
    const auto clean = Bench(options).ask("help");
    options.garbleRate = 0.25;
    const auto heard = [&](std::uint32_t seed) {
        options.seed = seed;
        return Bench(options).say("help\r").substr(6, clean.size());
    };
    const auto garbled = heard(1);
    EXPECT_EQ(garbled, heard(1));
    EXPECT_NE(garbled, heard(2));
    int damaged = 0;
    for (std::size_t i = 0; i < clean.size(); ++i)
        damaged += clean[i] != garbled[i];
    EXPECT_NEAR(static_cast<double>(damaged) / static_cast<double>(clean.size()), 0.25, 0.05);
}

TEST(InstrumentFaults, VanishesAfterTheLastAnswerWasTaken) {
    InstrumentOptions options;
    options.vanishAfter = 2;
    Bench bench(options);
    EXPECT_EQ(bench.say("\rget rate\r"), "\r\n>get rate\r\n2\r\n>");
    EXPECT_FALSE(bench.instrument.vanished());
    bench.instrument.feed("get rate\rget rate\r", bench.now);
    EXPECT_FALSE(bench.instrument.vanished());
    EXPECT_EQ(bench.instrument.take(bench.now), "get rate\r\n2\r\n>");
    EXPECT_TRUE(bench.instrument.vanished());
}

TEST(InstrumentFaults, SilentInstrumentStillObeys) {
    InstrumentOptions options;
    options.silent = true;
    Bench bench(options);
    EXPECT_EQ(bench.say("ver\rsleep\r"), "");
    EXPECT_TRUE(bench.instrument.asleep());
}

}  // namespace
}  // namespace kel::bench
