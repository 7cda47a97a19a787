// The four services on the bench's link, with its own access objects and a virtual instrument:
// beside a terminal that is alive, and with every call failing.
#include "tests/wine/service/bench_services.h"
#include "hosts/trace/KelTrace.h"
#include "tests/wine/service/live_terminal.h"

namespace kel::test {
namespace {

class BenchServicesTest : public BenchServices, public testing::WithParamInterface<Service> {};

TEST_P(BenchServicesTest, ATerminalBesideItTakesNothingAndGoesOn) {
    const Service& service = GetParam();
    setUp(instrument(), L"2");
    stream->put_IdleProcessing(VARIANT_TRUE);
    LiveTerminal terminal(link.Get());
    VARIANT_BOOL isAwake = VARIANT_FALSE;
    EXPECT_EQ(link->WakeUpInstrument(&isAwake), S_OK);
    EXPECT_EQ(isAwake, VARIANT_TRUE);
    const std::wstring greeting = terminal.text();
    EXPECT_TRUE(greeting.ends_with(L"\r\n>"));
    EXPECT_TRUE(serve(GetParam(), link.Get()));
    EXPECT_EQ(code_, S_OK);
    EXPECT_EQ(echoWindow(), HandleToLong(terminal.pane()));
    std::wstring expected = greeting;
    for (int i = 0; i < service.wakes; ++i)
        expected += greeting;
    EXPECT_EQ(terminal.text(), expected);
    VARIANT_BOOL isSent = VARIANT_FALSE;
    stream->WriteString(com::Bstr(std::string_view(service.question)).get(), VARIANT_TRUE, 0,
                        &isSent);
    terminal.runUntilPrompt(std::chrono::seconds(5), expected.size());
    expected += com::widen(std::string(service.question) + "\r\n" + service.answer);
    EXPECT_EQ(terminal.text().substr(0, expected.size()), expected);
    EXPECT_TRUE(terminal.text().ends_with(L"\r\n>"));
}

// Every call of the dialog on the link and on what it makes of the link's classes, until a run has
// fewer of them.
TEST_P(BenchServicesTest, EveryCallMayFail) {
    setUp(instrument(), L"10");
    const auto session = kelTrace().create<ITraceSession>(__uuidof(TraceSession));
    com::ComPtr<IKelCommunicator> traced;
    ASSERT_EQ(session->Attach(link.Get(), &traced), S_OK);
    com::ComPtr<IKelStream> port;
    ASSERT_EQ(traced->get_Port(&port), S_OK);
    port->put_EchoWindow(window.number());
    long calls = 0;
    bool isDone = false;
    for (long failing = 1; failing < 200; ++failing) {
        SCOPED_TRACE(failing);
        long before = 0;
        session->get_CallCount(&before);
        ASSERT_EQ(session->FailCall(failing, E_ACCESSDENIED), S_OK);
        isDone = serve(GetParam(), traced.Get());
        session->get_CallCount(&calls);
        calls -= before;
        session->ClearFailure();
        EXPECT_TRUE(isDone || isTold_ || code_ != S_OK);
        if (code_ != S_OK) {
            EXPECT_EQ(code_, E_ACCESSDENIED);
            EXPECT_NE(takeError().value().description, L"");
        }
        expectNothingLeft();
        EXPECT_TRUE(isRestored(port.Get()) || calls - failing < GetParam().restoring);
        // The last run has no such call.
        if (calls < failing) break;
    }
    EXPECT_TRUE(isDone);
    port.Reset();
    EXPECT_EQ(session->Close(), S_OK);
}

// The dialog's dialogue, without the instrument and its link.
TEST_P(BenchServicesTest, AReplayDoesTheSame) {
    setUp(instrument(), L"10");
    const com::Bstr file(folder_.path() + L".trace");
    for (const bool isReplay : {false, true}) {
        const auto session = kelTrace().create<ITraceSession>(__uuidof(TraceSession));
        ASSERT_EQ(isReplay ? session->Replay(file.get(), 1) : session->Record(file.get()), S_OK);
        com::ComPtr<IKelCommunicator> traced;
        ASSERT_EQ(session->Attach(isReplay ? nullptr : link.Get(), &traced), S_OK);
        EXPECT_TRUE(serve(GetParam(), traced.Get()));
        EXPECT_EQ(code_, S_OK);
        com::Bstr difference;
        EXPECT_EQ(session->get_Difference(difference.put()), S_OK);
        EXPECT_EQ(com::narrow(difference.get()), "");
        EXPECT_EQ(session->Close(), S_OK);
        server.reset();
    }
    DeleteFileW(file.get());
}

// An instrument that refuses, or is gone after, so many commands: what the access objects make of
// that.
TEST_P(BenchServicesTest, TheInstrumentMayFail) {
    for (const bool vanishes : {false, true}) {
        bool isDone = false;
        for (int commands = 0; !isDone; ++commands) {
            SCOPED_TRACE((vanishes ? "gone after " : "refuses after ") + std::to_string(commands));
            ASSERT_LT(commands, 50);
            auto options = instrument();
            (vanishes ? options.vanishAfter : options.failAfter) = commands;
            setUp(options, L"10");
            isDone = serve(GetParam(), link.Get());
            if (code_ != S_OK) {
                EXPECT_NE(takeError().value().description, L"");
            }
            expectNothingLeft();
            EXPECT_TRUE(isDone || isTold_ || code_ != S_OK);
            EXPECT_TRUE(isRestored(stream.Get()));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Services, BenchServicesTest, testing::ValuesIn(kServices),
                         [](const auto& service) { return std::string(service.param.name); });

}  // namespace
}  // namespace kel::test
