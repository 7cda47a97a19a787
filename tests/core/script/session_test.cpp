#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

TEST(Session, CancelIsSeenBeforeTheNextLineAlsoASkippedOne) {
    for (const char* script : {"a\nb\nc", "a\n@x=1\nb", "a\n#ELSE\nb"}) {
        SCOPED_TRACE(script);
        ScriptBench bench;
        bench.isCancelled = true;  // of an earlier run
        int yields = 0;
        bench.onYield = [&] { bench.isCancelled = ++yields == 3; };
        EXPECT_FALSE(bench.session.run(script));
        EXPECT_EQ(bench.transcript.substr(bench.transcript.find('!')), "! Execution cancelled!\n");
        EXPECT_EQ(bench.transcript.substr(0, 4), "\"a\"\n");
        EXPECT_EQ(yields, 3);
    }
}

TEST(Session, CancelRequestSurvivesAFailedParseAndTheStartOfANestedRun) {
    ScriptBench bench;
    bench.isCancelled = true;
    EXPECT_FALSE(bench.session.run("@-"));
    EXPECT_TRUE(bench.isCancelled);

    bench.directives.add("CANCEL", 9, [&](ScriptBench::Parameters) {
        bench.isCancelled = true;
        return DirectiveOutcome{true, bench.session.run("inner")};
    });
    bench.transcript.clear();
    EXPECT_FALSE(bench.session.run("#CANCEL\na"));
    EXPECT_EQ(bench.transcript, "#cancel9 \n! Execution cancelled!\n");
}

TEST(Session, DepthIsLimited) {
    ScriptBench bench;
    std::size_t deepest = 0;
    bench.onYield = [&] { deepest = std::max(deepest, bench.session.depth()); };
    bench.variables.set("self", "#RUN self");
    EXPECT_FALSE(bench.session.run("#RUN self"));
    EXPECT_EQ(deepest, 32u);
    EXPECT_EQ(show(bench.session.diagnostics()), "inner 1:1 error Scripts are nested too deeply\n");
    EXPECT_EQ(bench.transcript.substr(bench.transcript.find('!')),
              "! Scripts are nested too deeply\n");
    EXPECT_TRUE(bench.session.run("a"));
}

TEST(Session, HandlersReportThroughIt) {
    ScriptBench bench;
    bench.directives.add("MISS", 9, [&](ScriptBench::Parameters) {
        return DirectiveOutcome{true, bench.session.report("Can't find file ", {"a", "b"})};
    });
    EXPECT_FALSE(bench.session.run("a\n  #MISS", "s"));
    EXPECT_EQ(bench.transcript, "\"a\"\n#miss9 \n! Can't find file  a b\n");
    EXPECT_EQ(show(bench.session.diagnostics()), "s 2:3 error Can't find file  a b\n");
    EXPECT_FALSE(bench.session.report("outside"));
}

TEST(Session, HandlersMayAddRows) {
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

TEST(Session, ExceptionOfAnyHostCallPassesThrough) {
    const std::string script =
        "@x=join(1)\n#ECHO \"\n%x\n#PASS\n@y=input(1)\n#RUN \"in\"\n#DIALOG\n#ENDDIALOG\n%what";
    std::string lines;
    std::size_t failures = 0;
    for (bool isFinished = false; !isFinished; ++failures) {
        ScriptBench bench;
        bench.recordsEvents = true;
        bench.answers = {Answers({"1"}), Answers(std::vector<std::string>{})};
        bench.callsBeforeFailure = failures;
        try {
            EXPECT_FALSE(bench.session.run(script, "s"));
            isFinished = true;
        } catch (const std::runtime_error&) {
            ASSERT_FALSE(bench.session.diagnostics().empty());
            EXPECT_EQ(bench.session.diagnostics().back().message, "failing call");
            lines += std::to_string(bench.session.diagnostics().back().line);
        }
        EXPECT_EQ(bench.session.depth(), 0u);
        EXPECT_EQ(bench.transcript.substr(bench.transcript.rfind("end")), "end s 1 false\n");
        bench.callsBeforeFailure = SIZE_MAX;
        EXPECT_TRUE(bench.session.run("again"));
    }
    EXPECT_EQ(lines, "211334445566667799");
}

// Also where it tells nothing, and where telling it fails.
TEST(Session, AnyFailureEndsTheRunAndIsNoted) {
    struct Failing : ScriptBench {
        int failures = 0;
        void yield() override { throw 7; }
        std::string failureText() override {
            if (failures++ > 0) throw std::runtime_error("no text");
            return ScriptBench::failureText();
        }
    } bench;
    Observer nobody;
    const TextRules rules;
    Session session(bench, bench.variables, rules, nobody);
    EXPECT_THROW(session.run("\n a", "s"), int);
    EXPECT_EQ(show(session.diagnostics()), "s 2:2 error Unknown failure\n");
    EXPECT_THROW(session.run("a"), int);
    EXPECT_EQ(show(session.diagnostics()), "");
    EXPECT_EQ(session.depth(), 0u);
}

}  // namespace
}  // namespace kel::script
