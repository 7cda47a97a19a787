// The course of a run: yielding, cancelling, nesting, the claim on the stream, lifetime.
#include "tests/wine/script/preprocessor_fixture.h"

namespace kel::test {
namespace {

constexpr HRESULT kBusy = HRESULT_FROM_WIN32(ERROR_BUSY);

using RunTest = PreprocessorTest;

TEST_F(RunTest, YieldsBeforeEveryRecord) {
    EXPECT_TRUE(run("@a=1\n#IF a == 2\nskipped\n#ENDIF"));
    EXPECT_EQ(link_.calls, std::vector<std::string>(4, "Sleep 1"));
}

// From the first call to the last, on every way out.
TEST_F(RunTest, ClaimsTheStreamFromStartToEnd) {
    const char* const scripts[] = {"line\n#WAIT\n@s=SERIALNUMBER()", "%missing", "#IF", "#NOBODY"};
    link_.reply = L"sernum: 1";
    int calls = 0;
    link_.onCall = [&](const std::string& call) {
        ++calls;
        EXPECT_TRUE(isReading()) << call;
    };
    for (const char* script : scripts) {
        run(script);
        EXPECT_FALSE(isReading()) << script;
    }
    EXPECT_GT(calls, 20);
    link_.failCall(3, E_ABORT);
    VARIANT_BOOL result;
    EXPECT_EQ(preprocessor_->PreprocessAndRun(com::Bstr(L"line").get(), &result), E_ABORT);
    EXPECT_FALSE(isReading());
}

// What a terminal does on its tick, inside every wait, unless the stream is claimed.
TEST_F(RunTest, ATerminalLeavesTheAnswerToTheScript) {
    link_.received = "";
    link_.onCall = [&](const std::string& call) {
        if (call == "Sleep 250") *link_.received += "OK";
        long waiting = 0;
        if (!call.starts_with("Sleep") || isReading()) return;
        if (link_.port()->get_BytesInReadBuffer(&waiting) == S_OK && waiting > 0) {
            link_.port()->ClearReadBuffer();
        }
    };
    EXPECT_TRUE(run("start\n#WAIT_OK"));
    EXPECT_EQ(*link_.received, "OK");
    EXPECT_EQ(link_.port()->Sleep(250), S_OK);
    EXPECT_EQ(*link_.received, "");
}

TEST_F(RunTest, ASecondRunIsRefusedWhileTheFirstYields) {
    int refused = 0;
    link_.onCall = [&](const std::string& call) {
        if (call == "Sleep 250" || refused == 0) {
            VARIANT_BOOL result = VARIANT_TRUE;
            EXPECT_EQ(preprocessor_->PreprocessAndRun(com::Bstr(L"second").get(), &result), kBusy);
            EXPECT_EQ(result, VARIANT_FALSE);
            const auto error = takeError();
            ASSERT_TRUE(error);
            EXPECT_EQ(error->interfaceId, IID_IPreprocessor);
            EXPECT_EQ(error->source, L"KelUtils.Preprocessor.1");
            EXPECT_NE(error->description, L"");
            ++refused;
        }
    };
    EXPECT_TRUE(run("first"));
    EXPECT_EQ(refused, 2);
    link_.onCall = nullptr;
    EXPECT_TRUE(run("second"));
}

TEST_F(RunTest, ScriptsRunFromScriptsAndFromForeignWords) {
    const auto extension = install(L"NEST");
    extension->onCall = [&](long, IFlatCollection*) -> Answer { return {true, run("@a=2")}; };
    link_.runFile = [&](BSTR, VARIANT_BOOL* result) {
        EXPECT_TRUE(isReading());
        *result = run("#ELSE\n@b=3\n");
        return S_FALSE;
    };
    com::check(preprocessor_->put_ScriptPath(com::Bstr(L"C:\\windows\\system32").get()));
    EXPECT_TRUE(run("#NEST\n#RUNSCRIPT kernel32.dll\n#IF a == 2\n@c=4\n#ENDIF\n@d=a"));
    EXPECT_FALSE(isReading());
    EXPECT_EQ(link_.takeWork(), "Link.RunCommandFile \"C:\\windows\\system32\\kernel32.dll\"\n");
}

TEST_F(RunTest, CancelStopsBeforeTheNextLine) {
    EXPECT_EQ(preprocessor_->Cancel(), S_OK);
    EXPECT_FALSE(isCancelled());
    link_.onCall = [&](const std::string& call) {
        if (call == "Sleep 250") preprocessor_->Cancel();
    };
    EXPECT_FALSE(run("one\ntwo"));
    EXPECT_TRUE(isCancelled());
    const std::string work = link_.takeWork();
    EXPECT_TRUE(work.ends_with("Sleep 250\n" + report("Execution cancelled!"))) << work;
    EXPECT_EQ(work.find("two"), std::string::npos);

    // In the last line it changes nothing but is told.
    EXPECT_TRUE(run("one"));
    EXPECT_TRUE(isCancelled());
    EXPECT_TRUE(run("@a=1"));
    EXPECT_FALSE(isCancelled());
}

TEST_F(RunTest, WaitsReactToACancel) {
    const struct {
        const char* script;
        bool found;
    } rows[] = {{"#WAIT 60", false}, {"#WAIT_PROMPT 60", false}, {"#WAIT_OK 60", true}};
    for (const auto& row : rows) {
        int waits = 0;
        link_.answers["Link.WaitForString"] = std::deque<bool>(60, false);
        link_.onCall = [&](const std::string& call) {
            if (call.starts_with("Link.WaitForString") && ++waits == 3) preprocessor_->Cancel();
        };
        EXPECT_FALSE(run(std::string(row.script) + "\n#SENDBREAK")) << row.script;
        EXPECT_EQ(waits, 3) << row.script;
        EXPECT_TRUE(isCancelled());
        const std::string work = link_.takeWork();
        EXPECT_EQ(work.substr(work.find("Echo")), report("Execution cancelled!"));
    }
}

TEST_F(RunTest, TheLinkAndTheLastReferenceMayGoMeanwhile) {
    link_.onCall = [&](const std::string&) {
        if (!preprocessor_) return;
        com::check(preprocessor_->put_Communicator(nullptr));
        preprocessor_.Reset();
        EXPECT_EQ(kelUtils().canUnloadNow(), S_FALSE);
    };
    EXPECT_TRUE(run("one\n#WAIT\n@d=DATE()\ntwo"));
    EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
    EXPECT_NE(link_.takeWork().find("WriteString \"two\" 0"), std::string::npos);
}

}  // namespace
}  // namespace kel::test
