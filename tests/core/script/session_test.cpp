#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/core/script/recording_host.h"

namespace kel::script {
namespace {

TEST(Session, ExceptionOfAnyHostCallPassesThrough) {
    const std::string script =
        "@x=join(1)\n#ECHO \"\n%x\n#PASS\n@y=input(1)\n#RUN \"in\"\n#DIALOG\n#ENDDIALOG\n%what";
    std::string lines;
    std::size_t failures = 0;
    for (bool isFinished = false; !isFinished; ++failures) {
        RecordingHost host;
        host.recordsEvents = true;
        host.answers = {Answers({"1"}), Answers(std::vector<std::string>{})};
        host.callsBeforeFailure = failures;
        try {
            EXPECT_FALSE(host.session.run(script, "s"));
            isFinished = true;
        } catch (const std::runtime_error&) {
            ASSERT_FALSE(host.session.diagnostics().empty());
            EXPECT_EQ(host.session.diagnostics().back().message, "failing call");
            lines += std::to_string(host.session.diagnostics().back().line);
        }
        EXPECT_EQ(host.session.depth(), 0u);
        EXPECT_EQ(host.transcript.substr(host.transcript.rfind("end")), "end s 1 false\n");
        host.callsBeforeFailure = SIZE_MAX;
        EXPECT_TRUE(host.session.run("again"));
    }
    EXPECT_EQ(lines, "211334445566667799");
}

// Also where it tells nothing, and where telling it fails.
TEST(Session, AnyFailureEndsTheRunAndIsNoted) {
    struct Failing : RecordingHost {
        int failures = 0;
        void yield() override { throw 7; }
        std::string failureText() override {
            if (failures++ > 0) throw std::runtime_error("no text");
            return RecordingHost::failureText();
        }
    } host;
    Observer nobody;
    const TextRules rules;
    Session session(host, host.variables, rules, nobody);
    EXPECT_THROW(session.run("\n a", "s"), int);
    EXPECT_EQ(show(session.diagnostics()), "s 2:2 error Unknown failure\n");
    EXPECT_THROW(session.run("a"), int);
    EXPECT_EQ(show(session.diagnostics()), "");
    EXPECT_EQ(session.depth(), 0u);
    EXPECT_FALSE(session.report("outside"));
}

TEST(VariableStore, IsUnchangedWhenAVariableCannotBeAdded) {
    struct OneName : TextRules {
        std::string fold(std::string_view) const override { return "x"; }
    };
    const OneName rules;
    VariableStore variables(rules);
    EXPECT_THROW(variables.set(std::string_view("x", SIZE_MAX), "1"), std::length_error);
    EXPECT_EQ(variables.find("x"), nullptr);
}

}  // namespace
}  // namespace kel::script
