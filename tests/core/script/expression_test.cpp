#include <gtest/gtest.h>

#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

TEST(Expression, Operands) {
    expectRuns({
        {"@x=5\n@y=x\n@z=\"a-b: c\"\n%x%y%z", "> 55a-b: c\n"},
        {"@x=5a\n##x", "> 5a\n"},
        {"@x=\n[%x]", "> []\n"},
        {"@x=\"\"\n[%x]", "> []\n"},
        {"@x=\"a\"b\"c\"\n%x", "> a\"b\"c\n"},
        {"@5", ""},
        {"@", ""},
        {"@x", "! Variable not found: x\n", false},
        {"@x=y", "! Variable not found: y\n", false},
        {"@x=\"a\"b", "! Variable not found: \"a\"b\n", false},
        {"@X=1\n@x=2\n%X", "> 2\n"},
    });
}

TEST(Expression, RefusedTexts) {
    const auto refused = [](const std::string& line, const std::string& message) {
        return Case{"sent\n" + line, "! " + message + "\n", false};
    };
    expectRuns({
        refused("@x =1", "Invalid expression 'x =1'"),
        refused("@ x", "Invalid expression ' x'"),
        refused("@ join(1)", "Invalid expression ' join(1)'"),
        refused("@\"a\"", "Invalid expression '\"a\"'"),
        refused("@'a'", "Invalid expression ''a''"),
        refused("@a.b", "Invalid expression 'a.b'"),
        refused("@x= 5", "Invalid function name:  5"),
        refused("@x=1.5", "Invalid function name: 1.5"),
        refused("@x=y=1", "Invalid function name: y=1"),
        refused("@x='a'", "Invalid function name: 'a'"),
        refused("@x=a)", "Invalid function name: a)"),
        refused("@x=\"a", "Unterminated string"),
        refused("@x=\"a(", "Unterminated string"),
        refused("@join(\"a)", "Unterminated string"),
        refused("@join(a", "Syntax error ')'"),
        refused("@join(a-b)", "Invalid parameter name"),
        refused("@join(join(a))", "Invalid parameter name"),
        refused("@join('a')", "Invalid parameter name"),
    });
}

TEST(Expression, Calls) {
    expectRuns({
        {"@join()", "join0()\n"},
        {"@join( )", "join0()\n"},
        {"@join(,)", "join0(|)\n"},
        {"@x=3\n@JOIN( x ,1.5,\"a-b: ,)\", 1 2 )", "join0(3|1.5|a-b: ,)|1 2)\n"},
        {"@x= join (1)\n%x", "join0(1)\n> 1\n"},
        {"@x=\"join\"(1)", "join0(1)\n"},
        {"@join(x.y)", "! Variable not found: x.y\n", false},
        {"@join(1) rest\na", "join0(1)\n> a\n"},
        {"##pass(join)", "! Variable not found: join\n", false},
        {"##pass(1)", "pass1(1)\npass2(1)\n> 1\n"},
        {"@fail(1)\na", "fail3(1)\n", false},
        {"@what(nosuch)", "! Unknown function: what\n", false},
    });
}

TEST(Expression, FunctionWithoutHandlingRowIsUnknown) {
    ScriptBench bench;
    bench.functions.add("half", 9, [](ScriptBench::Parameters) {
        return FunctionOutcome{false, true, "ignored"};
    });
    EXPECT_FALSE(bench.session.run("##Half(1)"));
    EXPECT_EQ(bench.transcript, "half9(1)\n! Unknown function: Half\n");
}

}  // namespace
}  // namespace kel::script
