#include <gtest/gtest.h>

#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

std::string checked(ScriptBench& bench, const std::string& script) {
    std::string found;
    for (const Diagnostic& each : bench.session.check(script, "s"))
        found += show(each) + "\n";
    return found;
}

TEST(Check, FindsEverythingInTheOrderOfTheText) {
    const struct {
        std::string script;
        std::string found;
    } cases[] = {
        {"@x=1\n%x\n#ECHO x 5 'a' file.ext\n#IF x == 1\n#ENDIF\n@y=input(x)\n%y", ""},
        {"  @x =1 // c\r\n\ta %" + std::string(129, 'n') + "\r@join(-)\n%b=",
         "1:5 error Invalid expression 'x =1'\n"
         "2:5 error Too long variable name: " +
             std::string(129, 'n') +
             "\n"
             "3:7 error Invalid parameter name\n"
             "4:2 warning Variable not found: b\n"},
        {"  #ECHO \"a\n#ECHO a)", "1:9 error Unterminated string\n2:8 error Syntax error ')'\n"},
        {"#IF a\nx\n#ENDIF\n#ELSEIF 1 == \"=\" 2",
         "1:1 error Invalid syntax in #IF statement\n"
         "4:1 error Invalid syntax in #ELSEIF statement\n"
         "4:1 warning #ELSEIF without #IF: nothing runs after it\n"},
        {"#WHAT\n@huh(1)\n a ##huh()",
         "1:1 warning Unknown preprocessor directive: WHAT\n"
         "2:2 warning Unknown function: huh\n"
         "3:6 warning Unknown function: huh\n"},
        {"#ENDIF\n#ELSE\n #IF 1 == 1\n#IF 2 == 2\n#ENDIF",
         "1:1 error #ENDIF without matching #IF\n"
         "2:1 warning #ELSE without #IF: nothing runs after it\n"
         "3:2 warning #IF without #ENDIF\n"},
        {"#IF a == %b\n%a %b\n#ENDIF\n#ECHO EVEN %c (d) -x",
         "1:5 warning Variable not found: a\n1:11 warning Variable not found: b\n"
         "4:7 warning Not a variable, taken as a text: EVEN\n"
         "4:13 warning Variable not found: c\n4:16 warning Variable not found: d\n"},
        {"50% %", "1:4 warning A name is missing\n1:6 warning A name is missing\n"},
        {"@join(1) // c\n@join(1) 2\n#ECHO (join(1)2)\n#DIALOG\njoin(1)x\n#ENDDIALOG\n##join(1)x",
         "2:10 warning Text after the expression is ignored\n"
         "3:15 warning Text after the expression is ignored\n"
         "5:8 warning Text after the expression is ignored\n"},
        {"#DIALOG\nx=input(1)\ny=x\n#ENDDIALOG\n%x", "3:3 warning Variable not found: x\n"},
        {"#DIALOG t\nx=input(x)\ny=1\ninput(y)\n-\n+\n#ENDDIALOG\n%x%y\n#DIALOG\n",
         "1:9 warning Variable not found: t\n2:9 warning Variable not found: x\n"
         "5:1 error Invalid expression '-'\n6:1 error Invalid expression '+'\n"
         "9:1 error Unclosed #DIALOG block\n"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.script);
        ScriptBench bench;
        EXPECT_EQ(checked(bench, each.script), each.found);
        EXPECT_EQ(bench.transcript, "");
    }
}

TEST(Check, KnowsTheVariablesOfTheStore) {
    ScriptBench bench;
    bench.variables.set("Depth", "1");
    EXPECT_EQ(checked(bench, "%depth\n#ECHO DEPTH"), "");
    EXPECT_EQ(bench.session.check("-\n@-", "s").at(0).script, "s");
}

}  // namespace
}  // namespace kel::script
