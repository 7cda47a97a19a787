#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

std::string diagnosed(const ScriptBench& bench) {
    std::string all;
    for (const Diagnostic& each : bench.session.diagnostics()) {
        all += each.script + " " + show(each) + "\n";
    }
    return all;
}

TEST(Session, VariablesOutliveRunsAndConditionsDoNot) {
    ScriptBench bench;
    EXPECT_TRUE(bench.session.run("@x=1\n#ELSE"));
    EXPECT_TRUE(bench.session.run("%X"));
    EXPECT_EQ(bench.transcript, "> 1\n");
}

TEST(Session, RefusedLineEndsTheRun) {
    ScriptBench bench;
    bench.acceptsLines = false;
    EXPECT_FALSE(bench.session.run("a\nb", "s"));
    EXPECT_EQ(bench.transcript, "> a\n");
    EXPECT_EQ(diagnosed(bench), "s 1:1 error The line could not be sent\n");
}

TEST(Session, CancelIsSeenBeforeTheNextLineAlsoASkippedOne) {
    for (const char* script : {"a\nb\nc", "a\n@x=1\nb", "a\n#ELSE\nb"}) {
        SCOPED_TRACE(script);
        ScriptBench bench;
        bench.isCancelled = true;  // of an earlier run
        int yields = 0;
        bench.onYield = [&] { bench.isCancelled = ++yields == 3; };
        EXPECT_FALSE(bench.session.run(script));
        EXPECT_EQ(bench.transcript.substr(bench.transcript.find('!')), "! Execution cancelled!\n");
        EXPECT_EQ(bench.transcript.substr(0, 4), "> a\n");
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

TEST(Session, NestedRunsShareVariablesOnly) {
    ScriptBench bench;
    bench.variables.set("inner", "#IF 1 == 2\n#ELSE\n%x\n@x=2");
    bench.variables.set("broken", "ok\n\n  %nosuch");
    EXPECT_FALSE(bench.session.run("@x=1\n#RUN inner\n%x\n  #RUN broken\nb", "outer"));
    EXPECT_EQ(bench.transcript.substr(bench.transcript.find("> ")),
              "> 1\n> 2\n#run5 ok\n\n  %nosuch\n> ok\n! Variable not found: nosuch\n");
    EXPECT_EQ(diagnosed(bench), "inner 3:4 error Variable not found: nosuch\n");
    EXPECT_EQ(bench.session.depth(), 0u);
}

TEST(Session, DepthIsLimited) {
    ScriptBench bench;
    std::size_t deepest = 0;
    bench.onYield = [&] { deepest = std::max(deepest, bench.session.depth()); };
    bench.variables.set("self", "#RUN self");
    EXPECT_FALSE(bench.session.run("#RUN self"));
    EXPECT_EQ(deepest, 32u);
    EXPECT_EQ(diagnosed(bench), "inner 1:1 error Scripts are nested too deeply\n");
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
    EXPECT_EQ(bench.transcript, "> a\n#miss9 \n! Can't find file  a b\n");
    EXPECT_EQ(diagnosed(bench), "s 2:3 error Can't find file  a b\n");
    EXPECT_FALSE(bench.session.report("outside"));
    EXPECT_FALSE(bench.session.run("\n @fail(1)", "s"));
    EXPECT_EQ(diagnosed(bench), "s 2:2 error The function failed: fail\n");
}

TEST(Session, ExceptionOfAnyHostCallPassesThrough) {
    const std::string script =
        "@x=join(1)\n#ECHO \"\n%x\n#PASS\n@y=input(1)\n#RUN \"in\"\n#DIALOG\n#ENDDIALOG\n%what";
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
        }
        EXPECT_EQ(bench.session.depth(), 0u);
        EXPECT_EQ(bench.events.substr(bench.events.rfind("end")), "end s 1 false\n");
        bench.callsBeforeFailure = SIZE_MAX;
        EXPECT_TRUE(bench.session.run("again"));
    }
    EXPECT_EQ(failures, 19u);
}

TEST(Session, ObserverSeesTheRun) {
    ScriptBench bench;
    bench.recordsEvents = true;
    EXPECT_FALSE(
        bench.session.run("a\r\n\r\n#IF 1 == 2\r\nb\n#ENDIF\n@x=5\n#RUN \"@y=6\"\n#what 1", "s"));
    EXPECT_EQ(bench.events,
              "start s 1\nline 1\nsent a\nline 3\nline 5\nline 6\nset x=5\nline 7\n"
              "directive RUN @y=6\nstart inner 2\nline 1\nset y=6\nend inner 2 true\nline 8\n"
              "8:1 error Unknown preprocessor directive: what\nend s 1 false\n");
}

}  // namespace
}  // namespace kel::script
