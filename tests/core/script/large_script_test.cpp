#include <gtest/gtest.h>

#include "script/engine/program.h"
#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

std::string repeat(std::size_t times, std::string_view text) {
    std::string whole;
    whole.reserve(times * text.size());
    for (std::size_t i = 0; i < times; ++i)
        whole += text;
    return whole;
}

// How many entries of a transcript begin with a mark.
std::ptrdiff_t count(const std::string& transcript, char mark) {
    const std::string entries = "\n" + transcript;
    const char wanted[] = {'\n', mark};
    std::ptrdiff_t found = 0;
    for (auto at = entries.find(wanted, 0, 2); at != entries.npos; ++found)
        at = entries.find(wanted, at + 1, 2);
    return found;
}

// Where time grew faster than the text, or the stack with it, none of these would come to an end.
TEST(LargeScript, CostsNoMoreThanItsLength) {
    constexpr std::size_t kMany = 4'000;
    constexpr std::size_t kDeep = 20'000;
    const struct {
        std::string script;
        std::ptrdiff_t lines;
        std::ptrdiff_t errors;
        std::size_t found;
    } cases[] = {
        {repeat(kMany, "cmd 1\n"), kMany, 0, 0},
        {"@x=1\n" + repeat(kMany, "%x"), 1, 0, 0},
        {repeat(kDeep, "#IF 1 == 1\n") + "a", 1, 0, kDeep},
        {repeat(kDeep, "#IF 1 == 2\n") + "a\n" + repeat(kDeep, "#ENDIF\n"), 0, 0, 0},
        {repeat(kMany, "#X \"\n"), 0, kMany, kMany},
        {"#X " + repeat(kDeep, "("), 0, 1, 1},
        {repeat(kMany, "\x81\"%(#'@") + "%", 0, 1, kMany / 2 + 1},
        {"#DIALOG\n" + repeat(kMany, "x=1\n") + "#ENDDIALOG", 0, 0, 0},
        {"a\n" + repeat(kMany, "%") + "##y", 1, 1, kMany + 1},
        {repeat(kMany, "##what(1)"), 0, 1, kMany},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.script.substr(0, 40));
        ScriptBench bench;
        bench.session.run(each.script);
        EXPECT_EQ(count(bench.transcript, '"'), each.lines);
        EXPECT_EQ(count(bench.transcript, '!'), each.errors);
        EXPECT_EQ(bench.session.check(each.script).size(), each.found);
    }
}

TEST(LargeScript, ManyVariablesAreFoundQuickly) {
    ScriptBench bench;
    std::string script;
    for (int i = 0; i < 20'000; ++i)
        script.append("@v" + std::to_string(i) + "=1\n");
    EXPECT_TRUE(bench.session.run(script));
    EXPECT_EQ(bench.variables.size(), 20'000u);
}

// A plain line costs this much besides its text; 32-bit processes have to hold long scripts.
static_assert(sizeof(Record) <= 16);

}  // namespace
}  // namespace kel::script
