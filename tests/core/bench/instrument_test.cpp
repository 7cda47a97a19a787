// What the instrument answers stands in dialogues.txt; here is what needs a store, chance or a
// count.
#include "bench/instrument/instrument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/cases.h"

namespace kel::bench {
namespace {

using namespace std::chrono_literals;

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

// "asleep, nothing due" or "awake, due in 5 ms".
std::string stateOf(const Bench& bench) {
    const auto due = bench.instrument.nextDue();
    return std::string(bench.instrument.asleep() ? "asleep" : "awake") +
           (due ? ", due in " + std::to_string((*due - bench.now) / 1ms) + " ms" : ", nothing due");
}

class DialogueCase : public testing::TestWithParam<test::Case> {
protected:
    // Makes another instrument when a setting demands it.
    void prepare(const test::Step& step) {
        InstrumentOptions options;
        options.clock = std::chrono::local_days{std::chrono::year{2024} / 3 / 9} + 12h;
        for (const std::string& setting : step.settings) {
            if (setting == "silent") options.silent = true;
            if (setting.starts_with("slow "))
                options.slow = std::chrono::milliseconds(std::stol(setting.substr(5)));
        }
        if (!bench_ || options.silent || options.slow.count() > 0) bench_.emplace(options);
    }

    // Does what a step says, and shows what is received.
    std::string play(const test::Step& step) {
        const std::string bytes = step.text();
        if (step.settings.empty()) return bench_->ask(bytes);
        std::string shown;
        for (const std::string& setting : step.settings) {
            if (setting == "state") return stateOf(*bench_);
            if (setting == "drop") bench_->instrument.dropLine();
            if (setting == "raw") shown += bench_->say(bytes);
            if (setting.starts_with("later ")) {
                shown += bench_->later(std::chrono::milliseconds(std::stol(setting.substr(6))));
            }
            for (std::size_t i = 0; setting == "cut" && i < bytes.size(); ++i)
                shown += bench_->say(bytes.substr(i, 1));
        }
        return "\"" + shown + "\"";
    }

    std::optional<Bench> bench_;
};

TEST_P(DialogueCase, IsHeldAsExpected) {
    for (const test::Step& step : GetParam().steps) {
        prepare(step);
        EXPECT_EQ(test::escaped(play(step)) + "\n", step.expected) << "line " << step.line;
    }
}

INSTANTIATE_TEST_SUITE_P(Instrument, DialogueCase,
                         testing::ValuesIn(test::readCases(KEL_INSTRUMENT_DIALOGUES)),
                         testing::PrintToStringParamName());

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

}  // namespace
}  // namespace kel::bench
