#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "bench/instrument/instrument.h"
#include "script/engine/session.h"

namespace kel::bench {
namespace {

// Runs scripts against the instrument's model: the words that a script waits with, on its answers.
class InstrumentHost : public script::Host {
public:
    void echo(std::string_view text) override { errors += text; }
    void endErrorReport() override {}
    bool send(std::string_view line) override {
        heard_.clear();
        instrument.feed(std::string(line) + "\r", now_);
        return true;
    }
    void yield() override {}
    bool cancelRequested() override { return false; }
    void clearCancelRequest() override {}

    std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) override {
        return find(std::array{"WAKEUP", "WAIT_PROMPT", "WAIT_OK"}, name, from);
    }
    script::DirectiveOutcome callDirective(std::size_t row,
                                           std::span<const std::string> parameters) override {
        if (row == 0) {
            send(std::string_view("\0", 1));
            return {true, hears("\r\n>", 1)};
        }
        const bool heard = hears(row == 1 ? ">" : "OK\r\n", std::stoi(parameters[0]));
        return {true, heard && heard_.find("ERROR") == std::string::npos};
    }
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) override {
        return find(std::array{"DATE", "TIME", "SERIALNUMBER"}, name, from);
    }
    script::FunctionOutcome callFunction(std::size_t row, std::span<const std::string>) override {
        return {
            true, true,
            std::array<std::string, 3>{dateText(localTime()), timeText(localTime()), "D123"}[row]};
    }
    script::Answers ask(const script::Question&) override { return std::nullopt; }
    script::LocalTime localTime() override { return {2024, 3, 9, 12, 34, 56}; }

    bool hears(std::string_view text, int seconds) {
        now_ += std::chrono::seconds{seconds};
        heard_ += instrument.take(now_);
        return heard_.find(text) != std::string::npos;
    }

    Instrument instrument{{}};
    std::string errors;

private:
    static std::optional<std::size_t> find(std::array<const char*, 3> words, std::string_view name,
                                           std::size_t from) {
        for (std::size_t row = from; row < words.size(); ++row) {
            if (name == words[row]) return row;
        }
        return std::nullopt;
    }

    Duration now_{0};
    std::string heard_;
};

class DeployScript : public testing::TestWithParam<const char*> {};

TEST_P(DeployScript, RunsAgainstTheInstrument) {
    std::ifstream file(KEL_EXAMPLES_FOLDER "/deploy.kel");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    constexpr std::string_view kPlan = "@plan=\"burst\"";
    ASSERT_NE(text.find(kPlan), std::string::npos);
    text.replace(text.find(kPlan), kPlan.size(), std::string("@plan=\"") + GetParam() + "\"");

    InstrumentHost host;
    const script::TextRules rules;
    script::VariableStore variables(rules);
    script::Observer observer;
    script::Session session(host, variables, rules, observer);
    EXPECT_TRUE(session.check(text).empty());
    EXPECT_TRUE(session.run(text)) << session.diagnostics().at(0).line;
    EXPECT_EQ(host.errors, "");
    EXPECT_TRUE(host.instrument.asleep());

    host.send(std::string_view("\0", 1));
    EXPECT_TRUE(host.hears("\r\n>", 1));
    host.send("status");
    EXPECT_TRUE(host.hears("Harbour_mouth-D123\r\nState: deployed since 2024/03/09 12:3", 1));
    host.send("get burst");
    EXPECT_TRUE(host.hears(GetParam() == std::string_view("burst") ? "1024" : "\r\n0\r\n", 1));
}

INSTANTIATE_TEST_SUITE_P(Plans, DeployScript, testing::Values("burst", "average"));

}  // namespace
}  // namespace kel::bench
