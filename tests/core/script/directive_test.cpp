#include <gtest/gtest.h>

#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

TEST(Directive, ParametersAreSplitAndEvaluated) {
    const struct {
        std::string line;
        std::string parameters;
    } cases[] = {
        {"#ECHO", ""},
        {"#echo\ta\tb , c", "a|b|c"},
        {"#ECHO a,,b", "a||b"},
        {"#ECHO , a", "a"},
        {"#ECHO,,a", "|a"},
        {"#ECHO a,", "a"},
        {"#ECHO a,,", "a|"},
        {"#ECHO \"a b\" 'c \"d' \"it's\" \"\"", "a b|c \"d|it's|"},
        {"#ECHO \"a\"\"b\"c'd'", "a|b|c|d"},
        {"#ECHO x X %x \"x\" 'x'", "5|5|5|x|x"},
        {"#ECHO -3 1.5 scriptfile.ext EVEN a%x", "-3|1.5|scriptfile.ext|EVEN|a%x"},
        {"#ECHO(x)", "5"},
        {"#ECHO (x) (x=6) x (x)", "5|6|6|6"},
        {"#ECHO()(=\"a)b\")", "|a)b"},
        {"#ECHO == !=", "==|!="},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.line);
        ScriptBench bench;
        EXPECT_TRUE(bench.session.run("@x=5\n" + each.line));
        EXPECT_EQ(bench.transcript, "#echo0 " + each.parameters + "\n");
    }
}

TEST(Directive, LineThatCannotBeReadIsSkipped) {
    expectRuns({
        {"#ECHO \"abc\na", "! Unterminated string\n> a\n"},
        {"#ECHO 'a\"\na", "! Unterminated string\n> a\n"},
        {"#ECHO a\"b\na", "! Unterminated string\n> a\n"},
        {"#ECHO a)\na", "! Syntax error ')'\n> a\n"},
        {"#ECHO)\na", "! Syntax error ')'\n> a\n"},
        {"#ECHO (join(1)\na", "! Syntax error ')'\n> a\n"},
        {"#ECHO (\"x)\na", "! Unterminated string\n> a\n"},
        {"#ECHO (a b)\na", "! Invalid expression 'a b'\n> a\n"},
        {"#ECHO (join(-))\na", "! Invalid parameter name\n> a\n"},
        {"#ECHO %" + std::string(129, 'n') + " b\na",
         "! Too long variable name: " + std::string(129, 'n') + " b\n> a\n"},
        {"#IF a == \"b\na", "! Unterminated string\n> a\n"},
        {"#X \"\n@-", "! Unterminated string\n! Invalid expression '-'\n", false},
    });
}

TEST(Directive, RowsAreAskedInOrderWithFreshParameters) {
    expectRuns({
        {"#PASS (join(1))\na", "join0(1)\n#pass1 1\njoin0(1)\n#pass3 1\n> a\n"},
        {"#ECHO (join(1)) (join(2) rest)", "join0(1)\njoin0(2)\n#echo0 1|2\n"},
        {"#NONE 1\na", "#none2 1\n! Unknown preprocessor directive: NONE\n", false},
        {"#WHAT (join(1))", "! Unknown preprocessor directive: WHAT\n", false},
        {"#", "! Unknown preprocessor directive: \n", false},
        {"# ECHO", "! Unknown preprocessor directive: \n", false},
        {"#ENDDIALOG", "! Unknown preprocessor directive: ENDDIALOG\n", false},
        {"#FAIL\na", "#fail4 \n", false},
        {"#ECHO %x", "! Variable not found: x\n", false},
        {"#ECHO (x)", "! Variable not found: x\n", false},
    });
}

TEST(Directive, HandlerMayAddRows) {
    ScriptBench bench;
    bench.directives.add("GROW", 6, [&](ScriptBench::Parameters) {
        for (int i = 0; i < 1000; ++i)
            bench.directives.add("OTHER", 0, {});
        bench.directives.add("grow", 7, [](ScriptBench::Parameters) {
            return DirectiveOutcome{true, true};
        });
        return DirectiveOutcome{false, true};
    });
    EXPECT_TRUE(bench.session.run("#GROW"));
    EXPECT_EQ(bench.transcript, "#grow6 \n#grow7 \n");
}

}  // namespace
}  // namespace kel::script
