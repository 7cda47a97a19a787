#include <gtest/gtest.h>

#include "script/engine/program.h"
#include "script/engine/session.h"

namespace kel::script {
namespace {

// Counts what is sent and knows no words.
class CountingHost : public Host {
public:
    void echo(std::string_view) override {}
    void endErrorReport() override { ++errors; }
    bool send(std::string_view line) override {
        ++lines;
        bytes += line.size();
        return true;
    }
    void yield() override {}
    bool cancelRequested() override { return false; }
    void clearCancelRequest() override {}
    std::optional<std::size_t> findDirective(std::string_view, std::size_t) override { return {}; }
    DirectiveOutcome callDirective(std::size_t, std::span<const std::string>) override {
        return {};
    }
    std::optional<std::size_t> findFunction(std::string_view, std::size_t) override { return {}; }
    FunctionOutcome callFunction(std::size_t, std::span<const std::string>) override { return {}; }
    Answers ask(const Question&) override { return std::nullopt; }

    std::size_t lines = 0;
    std::size_t bytes = 0;
    std::size_t errors = 0;
};

std::string repeat(std::size_t times, std::string_view text) {
    std::string whole;
    whole.reserve(times * text.size());
    for (std::size_t i = 0; i < times; ++i)
        whole += text;
    return whole;
}

// Where time grew faster than the text, or the stack with it, none of these would come to an end.
TEST(LargeScript, CostsNoMoreThanItsLength) {
    constexpr std::size_t kMany = 20'000;
    const struct {
        std::string script;
        std::size_t lines;
        std::size_t errors;
        std::size_t found;
    } cases[] = {
        {repeat(kMany, "cmd 1\n"), kMany, 0, 0},
        {"@x=1\n" + repeat(kMany, "%x"), 1, 0, 0},
        {repeat(kMany, "#IF 1 == 1\n") + "a", 1, 0, kMany},
        {repeat(kMany, "#IF 1 == 2\n") + "a\n" + repeat(kMany, "#ENDIF\n"), 0, 0, 0},
        {repeat(kMany, "#X \"\n"), 0, kMany, kMany},
        {"#X " + repeat(kMany, "("), 0, 1, 1},
        {repeat(kMany, "\x81\"%(#'@") + "%", 0, 1, kMany / 2 + 1},
        {"#DIALOG\n" + repeat(kMany, "x=1\n") + "#ENDDIALOG", 0, 0, 0},
        {"a\n" + repeat(kMany, "%") + "##y", 1, 1, kMany + 1},
        {repeat(kMany, "##join(1)"), 0, 1, kMany},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.script.substr(0, 40));
        CountingHost host;
        Observer observer;
        const TextRules rules;
        VariableStore variables(rules);
        Session session(host, variables, rules, observer);
        session.run(each.script);
        EXPECT_EQ(host.lines, each.lines);
        EXPECT_EQ(host.errors, each.errors);
        EXPECT_EQ(session.check(each.script).size(), each.found);
    }
}

TEST(LargeScript, ManyVariablesAreFoundQuickly) {
    CountingHost host;
    Observer observer;
    const TextRules rules;
    VariableStore variables(rules);
    Session session(host, variables, rules, observer);
    std::string script;
    for (int i = 0; i < 20'000; ++i)
        script.append("@v" + std::to_string(i) + "=1\n");
    EXPECT_TRUE(session.run(script));
    EXPECT_EQ(variables.size(), 20'000u);
}

// A plain line costs this much besides its text; 32-bit processes have to hold long scripts.
static_assert(sizeof(void*) != 4 || sizeof(Record) <= 16);

}  // namespace
}  // namespace kel::script
