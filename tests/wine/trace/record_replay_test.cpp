#include <fstream>

#include "com/variant.h"
#include "tests/wine/trace/host.h"

namespace kel::trace::test {
namespace {

// Uses the link in every way that a script can, a script of the link's own included.
class RecordReplayTest : public TraceTest {
protected:
    void SetUp() override {
        nested = file + L".kel";
        write("#SENDBREAK\n#WAIT_PROMPT 600\n");
        name = com::narrow(nested.substr(nested.rfind(L'\\') + 1));
        script =
            "set station Pier\n#WAIT_OK 600\n@number=SERIALNUMBER()\nget station\n#WAIT_PROMPT "
            "600\n#RUNSCRIPT " +
            name + "\n@n=MISSING()\n";
    }
    void TearDown() override { DeleteFileW(nested.c_str()); }

    void write(std::string_view text) {
        std::ofstream(com::narrow(nested), std::ios::binary) << text;
    }

    HRESULT run() {
        host->preprocessor->put_ScriptPath(bstr(nested.substr(0, nested.rfind(L'\\'))).get());
        session->SetPosition(bstr(L"deploy.kel").get(), 3);
        return host->run(script);
    }

    void record() {
        const InstrumentServer instrument({}, 50);
        startRecording();
        port = instrument.port();
        connectHost(port);
        ASSERT_EQ(run(), S_OK);
        ran = host->ran;
        shown = host->shown();
        ASSERT_NE(shown.find(L"MISSING"), shown.npos) << "not run to its last line:\n"
                                                      << com::narrow(shown);
        endSession();
    }

    std::wstring nested;
    std::string name;
    std::string script;
    Bstr port;
    bool ran = false;
    std::wstring shown;
};

TEST_F(RecordReplayTest, TheSameDialogueBareTracedAndReplayed) {
    std::wstring bare;
    {
        const InstrumentServer instrument({}, 50);
        auto stream = bench::test::create<INetworkStream>(link::kNetworkStreamClass);
        ASSERT_TRUE(bench::test::connectTo(*stream.Get(), instrument.port()));
        const auto link = bench::test::create<IKelCommunicator>(bench::test::kCommunicatorClass);
        host = std::make_unique<Host>(link.Get(), stream.Get());
        ASSERT_EQ(run(), S_OK);
        bare = host->shown();
        host.reset();
    }
    EXPECT_NE(bare.find(L"Pier"), bare.npos) << com::narrow(bare);
    EXPECT_NE(bare.find(L"MISSING"), bare.npos) << "the script runs to its last line";

    record();
    EXPECT_EQ(shown, bare);
    const std::string text = recording();
    for (const char* part : {"\"received\":", "\"echoed\":", "\"script\":\"#SENDBREAK",
                             "\"file\":\"deploy.kel\",\"line\":3", "\"method\":\"CreateInstance\"",
                             "\"method\":\"ClearReadBuffer\",\"in\":[],\"compared\":false"}) {
        EXPECT_NE(text.find(part), text.npos) << part;
    }

    startReplay();
    connectHost(port);
    ASSERT_EQ(run(), S_OK) << com::narrow(difference());
    EXPECT_EQ(host->ran, ran);
    EXPECT_EQ(host->shown(), bare);
    host.reset();
    EXPECT_EQ(difference(), L"");
    EXPECT_EQ(callsLeft(), 0);
}

TEST_F(RecordReplayTest, AChangedScriptStopsAtTheFirstDifference) {
    record();
    startReplay();
    connectHost(port);
    script.replace(script.find("Pier"), 4, "Quay");
    session->SetPosition(bstr(L"deploy.kel").get(), 4);
    ASSERT_EQ(run(), KELTRACE_E_DIFFERENCE);
    const std::wstring expected =
        L"The replay leaves its recording at deploy.kel, line 3: expected "
        L"gateway1.WriteString(\"set station Pier\", false, 0) (recorded at deploy.kel, line 3), "
        L"got gateway1.WriteString(\"set station Quay\", false, 0)";
    EXPECT_EQ(difference(), expected);
    const auto error = kel::test::takeError();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, expected);
    EXPECT_GT(callsLeft(), 10);
    EXPECT_EQ(host->stream->Sleep(1), KELTRACE_E_DIFFERENCE) << "it has ended";
}

TEST_F(RecordReplayTest, AChangedFileOfTheLinkIsADifference) {
    record();
    write("#SENDBREAK\n");
    startReplay();
    connectHost(port);
    EXPECT_EQ(run(), KELTRACE_E_DIFFERENCE) << com::narrow(shown);
    EXPECT_NE(difference().find(L"got link1.RunCommandFile("), std::wstring::npos);
}

// A terminal asks in every tick; a user's command comes from the message loop, too.
TEST_F(RecordReplayTest, CallsInsideAWaitAreReplayed) {
    TcpPeer peer;
    const auto sleep = [&](bool tick, bool command) {
        connectHost(peer.port());
        HRESULT answer = E_PENDING;
        host->post([&, stream = host->stream] {
            long count = 0;
            if (tick) {
                EXPECT_EQ(stream->get_BytesInReadBuffer(&count), S_OK);
                EXPECT_EQ(stream->ClearReadBuffer(), S_OK);
            }
            if (command) answer = stream->put_BaudRate(2400);
        });
        const HRESULT code = host->stream->Sleep(200);
        host.reset();
        return std::pair(code, answer);
    };
    startRecording();
    EXPECT_EQ(sleep(true, true), std::pair(S_OK, S_OK));
    endSession();

    startReplay();
    EXPECT_EQ(sleep(false, true), std::pair(S_OK, S_OK)) << com::narrow(difference());
    EXPECT_EQ(callsLeft(), 0);
    endSession();

    startReplay();
    EXPECT_EQ(sleep(true, false).first, KELTRACE_E_DIFFERENCE) << "waited for, not for ever";
    EXPECT_NE(difference().find(L"put_BaudRate(2400), which did not come"), std::wstring::npos);
}

TEST_F(RecordReplayTest, AReplayCanBeCancelled) {
    TcpPeer peer;
    const auto cancelledRun = [&] {
        connectHost(peer.port());
        host->post([this] { host->preprocessor->Cancel(); });
        EXPECT_EQ(host->run("#WAIT 600\n"), S_OK) << com::narrow(difference());
        VARIANT_BOOL cancelled = VARIANT_FALSE;
        host->preprocessor->get_Cancelled(&cancelled);
        EXPECT_TRUE(com::isTrue(cancelled));
        EXPECT_FALSE(host->ran);
    };
    startRecording();
    cancelledRun();
    endSession();
    startReplay(1);
    cancelledRun();
    EXPECT_EQ(difference(), L"");
}

TEST_F(RecordReplayTest, TellsWhatIsNoTrace) {
    EXPECT_EQ(session->Replay(bstr(file).get(), 0), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
    EXPECT_NE(kel::test::takeError().value().description.find(L"is no trace: The trace is empty"),
              std::wstring::npos);
    EXPECT_EQ(session->Replay(bstr(file + L"x").get(), 0),
              HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(session->Record(bstr(file + L"\\x").get()), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    const auto other = newSession();
    EXPECT_EQ(other->FailCall(1, E_FAIL), HRESULT_FROM_WIN32(ERROR_BUSY));
    EXPECT_EQ(session->FailCall(0, E_FAIL), E_INVALIDARG);
    EXPECT_EQ(session->FailCall(1, S_FALSE), E_INVALIDARG);
}

}  // namespace
}  // namespace kel::trace::test
