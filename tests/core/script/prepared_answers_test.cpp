#include "script/engine/prepared_answers.h"

#include <gtest/gtest.h>

namespace kel::script {
namespace {

Answers give(std::vector<std::string> results) {
    return results;
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
    EXPECT_EQ(*answers.find("DEPTH"), "12");
    question.controls.clear();
    EXPECT_EQ(answers.answer(question, missing), give({}));
}

}  // namespace
}  // namespace kel::script
