// What the instrument answers stands in dialogues.txt; here is what needs a store, chance or a
// count.
#include "bench/instrument/instrument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "bench/checksum.h"
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

constexpr std::string_view kInstrumentSettings =
    " silent slow card code bad ramp blind fail trouble ";

class DialogueCase : public testing::TestWithParam<test::Case> {
protected:
    // Makes another instrument when a setting demands it.
    void prepare(const test::Step& step) {
        InstrumentOptions options;
        options.clock = std::chrono::local_days{std::chrono::year{2024} / 3 / 9} + 12h;
        bool isAnother = !bench_;
        for (const std::string& setting : step.settings)
            isAnother = change(options, setting) || isAnother;
        if (isAnother) bench_.emplace(options);
    }

    // False for a setting that is none of the instrument's.
    static bool change(InstrumentOptions& options, const std::string& setting) {
        std::istringstream words(setting);
        std::string name, value;
        words >> name >> value;
        if (name == "silent") options.silent = true;
        if (name == "slow") options.slow = std::chrono::milliseconds(std::stol(value));
        if (name == "card") options.card = cardKind(value).value();
        if (name == "code") options.accessCode = std::stol(value);
        if (name == "bad") options.badCell = std::stoul(value);
        if (name == "ramp") options.sensors = {std::stod(value), 0, 1, true};
        if (name == "blind") options.sensors.compass = false;
        if (name == "trouble") options.troubleAfter = std::stoi(value);
        if (name == "fail") options.failAfter = std::stoi(value);
        return kInstrumentSettings.find(" " + name + " ") != std::string_view::npos;
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
            if (setting.starts_with("skip ")) {
                bench_->later(std::chrono::milliseconds(std::stol(setting.substr(5))));
            }
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
                         testing::ValuesIn(test::readCases("tests/core/bench/dialogues.txt")),
                         testing::PrintToStringParamName());

TEST(InstrumentCard, ABlockIsThatPartOfTheFile) {
    const CardFile whole{"DAY003.DAT", 4097, {}};
    const std::string content = cardContent(whole, 0, 4097);
    Bench bench;
    for (const auto& [offset, count] : {std::pair{0, 4096}, {4096, 1}, {17, 300}}) {
        const auto bytes = content.substr(static_cast<std::size_t>(offset), count);
        const auto command =
            "card read 2 " + std::to_string(offset) + " " + std::to_string(count) + "\r";
        EXPECT_EQ(bench.say(command), command + "\n");
        EXPECT_EQ(bench.later(1s), "DATA " + std::to_string(count) + " " +
                                       hexadecimal(crc32(bytes), 8) + "\r\n" + bytes + "\r\n>");
    }
    EXPECT_EQ(crc32("123456789"), 0xCBF43926u);
    for (const CardFile& other : {CardFile{"DAY003.DAT", 4098, {}}, {"day003.DAT", 4097, {}}})
        EXPECT_NE(cardContent(other, 0, 16), content.substr(0, 16));

    InstrumentOptions options;
    options.card = CardKind::kLarge;
    Bench large(options);
    large.say("card read 0 5368709119 1\r");
    const auto last = cardContent({"LARGE.DAT", 5'368'709'120, {}}, 5'368'709'119, 1);
    EXPECT_TRUE(large.later(1s).ends_with("\r\n" + last + "\r\n>"));
}

TEST(InstrumentSensors, TheNoiseStaysWithinItsWidth) {
    InstrumentOptions options;
    options.sensors.pressureNoise = 2;
    Bench bench(options);
    EXPECT_EQ(bench.say("pressure collect\r"), "pressure collect\r\nOK\r\n");
    double lowest = 1000, highest = -1000;
    for (int i = 0; i < 400; ++i) {
        const double pressure = std::stod(bench.later(250ms));
        lowest = std::min(lowest, pressure);
        highest = std::max(highest, pressure);
    }
    EXPECT_NEAR(lowest, 9.132, 0.1);
    EXPECT_NEAR(highest, 11.132, 0.1);
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

}  // namespace
}  // namespace kel::bench
