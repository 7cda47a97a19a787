#include <gtest/gtest.h>

#include "script/engine/prepared_answers.h"
#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

Answers give(std::vector<std::string> results) {
    return results;
}

TEST(Question, InlineCalls) {
    expectRuns({
        {"depth ##input(\"Depth:\", 5) m",
         "? Input [input Depth:=5:  -> ]\n> depth 7 m\n",
         true,
         {give({"7"})}},
        {"@d=3\n@d=(\"Depth\", 5)\n%d",
         "? Input [input Depth=3:  -> d]\n> 7\n",
         true,
         {give({"7"})}},
        {"@x=CHECK(\"On\", 1)\n@x=Check(\"On\", 1)\n##x",
         "? Input [check On=1:  -> x]\n? Input [check On=0:  -> x]\n> 1\n",
         true,
         {give({"0"}), give({"1"})}},
        {"@check()", "? Input [check =0:  -> ]\n", true, {give({"0"})}},
        {"@m=\"FAST\"\n@m=select(\"Mode\", \"slow\", \"fast\")\n%m",
         "? Input [select Mode=fast: slow|fast -> m]\n> slow\n",
         true,
         {give({"slow"})}},
        {"@m=7\n@m=select(\"Mode\", \"slow\")",
         "? Input [select Mode=slow: slow -> m]\n",
         true,
         {give({"slow"})}},
        {"#ECHO (x=select(\"a\"))", "? Input [select a=:  -> x]\n#echo0 \n", true, {give({""})}},
        {"@x=Input(\"a\")\nb", "? Input [input a=:  -> x]\n! Error evaluating expression: Input\n",
         false},
        {"@(1)", "? Input [input 1=:  -> ]\n! Error evaluating expression: input\n", false},
        {"@input(1)",
         "? Input [input 1=:  -> ]\n! Error evaluating expression: input\n",
         false,
         {give({})}},
        {"@input(x)", "! Variable not found: x\n", false},
    });
}

TEST(Question, DialogBlocks) {
    expectRuns({
        {"#DIALOG \"Set up\"\nx=input(\"X\", 1)\ny=\"Y\"\ncheck(y, 1)\nz=select(y, 1, 2)\n"
         " #EndDialog \n%x%z",
         "? Set up [input X=1:  -> x] [check Y=1:  -> ] [select Y=1: 1|2 -> z]\n> 52\n",
         true,
         {give({"5", "0", "2"})}},
        {"#dialog\n#ENDDIALOG\na", "? \n> a\n", true, {give({})}},
        {"@t=\"T\"\n#DIALOG t more\njoin(1)\n  \n5\n#ENDDIALOG",
         "join0(1)\n? T\n",
         true,
         {give({})}},
        {"#DIALOG\nx=input(1)\nx=input(2)\n#ENDDIALOG\n%x",
         "?  [input 1=:  -> x] [input 2=:  -> x]\n> b\n",
         true,
         {give({"a", "b"})}},
        {"@x=1\n#DIALOG\ny=2\nx=input(1)\n#ENDDIALOG", "?  [input 1=1:  -> x]\n", false},
        {"#DIALOG\nx=input(1)\nx=input(2)\n#ENDDIALOG",
         "?  [input 1=:  -> x] [input 2=:  -> x]\n",
         false,
         {give({"a"})}},
        {"#DIALOG t\n#ENDDIALOG", "! Variable not found: t\n", false},
        {"#DIALOG\nx=input(y)\n#ENDDIALOG", "! Variable not found: y\n", false},
        {"#DIALOG\nfail(1)\n#ENDDIALOG", "fail3(1)\n", false},
        {"a\n#DIALOG\n@x=1\n#ENDDIALOG", "! Invalid expression '@x=1'\n", false},
        {"a\n#DIALOG\n#IF 1 == 1\n#ENDDIALOG", "! Invalid expression '#IF 1 == 1'\n", false},
        {"a\n#DIALOG\n#ENDDIALOG x", "! Invalid expression '#ENDDIALOG x'\n", false},
        {"a\n#DIALOG\nx=1", "! Unclosed #DIALOG block\n", false},
    });
}

TEST(Question, CancelledBlockStoresNoResults) {
    ScriptBench bench;
    EXPECT_FALSE(bench.session.run("#DIALOG\ny=2\nx=input(1)\n#ENDDIALOG"));
    EXPECT_NE(bench.variables.find("y"), nullptr);
    EXPECT_EQ(bench.variables.find("x"), nullptr);
}

TEST(PreparedAnswers, AnswerByVariableOrCaption) {
    const TextRules rules;
    PreparedAnswers answers(rules);
    std::string missing;
    answers.set("Depth", "12");
    answers.set("Power", "yes");
    answers.set("mode", "FAST");
    Question question{"",
                      {{ControlKind::Input, "How deep", "", {}, "depth"},
                       {ControlKind::Check, "power", "0", {}, ""},
                       {ControlKind::Select, "m", "slow", {"slow", "fast"}, "mode"}}};
    EXPECT_EQ(answers.answer(question, missing), give({"12", "1", "fast"}));
    question.controls[2].choices = {"slow"};
    EXPECT_EQ(answers.answer(question, missing), std::nullopt);
    EXPECT_EQ(missing, "mode");
    question.controls[2] = {ControlKind::Input, "other", "", {}, ""};
    EXPECT_EQ(answers.answer(question, missing), std::nullopt);
    EXPECT_EQ(missing, "other");
    question.controls.clear();
    EXPECT_EQ(answers.answer(question, missing), give({}));
}

}  // namespace
}  // namespace kel::script
