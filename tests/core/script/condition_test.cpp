#include <gtest/gtest.h>

#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

TEST(Condition, Comparisons) {
    const struct {
        const char* comparison;
        bool isTrue;
    } cases[] = {
        {"mode == \"Auto\"", true},  {"mode != \"Auto\"", false}, {"%MODE == 'AUTO'", true},
        {"5 == 05", false},          {"10 != 10.0", true},        {"\"\" == empty", true},
        {"\"mode\" == mode", false}, {",mode,==,\"auto\"", true}, {"\"a\"==\"A\"", true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.comparison);
        ScriptBench bench;
        bench.session.run("@mode=\"auto\"\n@empty=\n@x=5");
        EXPECT_TRUE(bench.session.run(std::string("#If ") + each.comparison + "\nyes\n#endif"));
        EXPECT_EQ(bench.transcript, each.isTrue ? "> yes\n" : "");
    }
}

TEST(Condition, Blocks) {
    const std::string yes = "#IF 1 == 1\n", no = "#IF 1 == 2\n";
    const std::string elseYes = "#ELSEIF 1 == 1\n", elseNo = "#ELSEIF 1 == 2\n";
    const std::string otherwise = "#ELSE what ever\n", end = "#ENDIF now\n";
    expectRuns({
        {yes + "a\n" + otherwise + "b\n" + end + "c", "> a\n> c\n"},
        {no + "a\n" + otherwise + "b\n" + end + "c", "> b\n> c\n"},
        {no + "a\n" + elseYes + "b\n" + elseYes + "c\n" + otherwise + "d\n" + end, "> b\n"},
        {no + "a\n" + elseNo + "b\n" + otherwise + "c\n" + end, "> c\n"},
        {yes + "a\n" + elseYes + "b\n" + elseYes + "c\n" + otherwise + "d\n" + end + "e",
         "> a\n> e\n"},
        {no + yes + "a\n" + otherwise + "b\n" + end + "c\n" + end + "d", "> d\n"},
        {yes + no + "a\n" + otherwise + "b\n" + end + "c\n" + end, "> b\n> c\n"},
        {no + otherwise + "a\n" + otherwise + "b\n" + otherwise + "c\n" + end, "> a\n"},
        {no + "%x\n@y\n#WHAT\n#IF x == 1\n#ENDIF\n#DIALOG\n#ENDDIALOG\n" + end + "a", "> a\n"},
        {yes + "#ELSEIF x == 1\n" + end, ""},
        {"a\n" + otherwise + "b", "> a\n"},
        {"a\n#ELSEIF x == 1\nb\n#ELSE\nc", "> a\n"},
        {yes + "a", "> a\n"},
        {"a\n" + end + "b", "> a\n! #ENDIF without matching #IF\n", false},
        {"#IF x == 1", "! Variable not found: x\n", false},
        {"#IF -1 == 1", "! Variable not found: -1\n", false},
        {no + "#ELSEIF 1 == x", "! Variable not found: x\n", false},
    });
}

TEST(Condition, BadComparisonsStopTheParse) {
    for (const std::string comparison :
         {"", " a", " a==b", " a == b c", " a = b", " a \"==\" b", " (a) == b", " a == (b)"}) {
        expectRuns({
            {"x\n#if" + comparison, "! Invalid syntax in #IF statement\n", false},
            {"x\n#ElseIf" + comparison, "! Invalid syntax in #ELSEIF statement\n", false},
        });
    }
}

}  // namespace
}  // namespace kel::script
