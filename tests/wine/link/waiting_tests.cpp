#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {
namespace {

class WaitingTest : public ConnectedStreamTest {
protected:
    TestWindow window;
};

TEST_F(WaitingTest, TheEndOfTheProgramEndsTheWait) {
    PostQuitMessage(7);
    EXPECT_EQ(waitFor(L"never", 3600000), (Outcome{false, ""}));
    EXPECT_EQ(stream->Sleep(3600000), S_OK);
    MSG message{};
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 7u);
}

TEST_F(WaitingTest, AHandlerMayReleaseTheStream) {
    IKelStream* last = stream.Detach();
    window.post([&] { last->Release(); });
    EXPECT_EQ(last->Sleep(20), S_OK);
    EXPECT_EQ(kel::test::benchLink().canUnloadNow(), S_OK);
}

TEST_F(WaitingTest, AHandlerMayCloseThePort) {
    window.post([&] { stream->Close(); });
    EXPECT_EQ(waitFor(L"never", 3600000), (Outcome{false, ""}));
}

TEST_F(WaitingTest, AHandlerMayWaitToo) {
    arrive("outer ");
    Outcome inner{};
    window.post([&] {
        peer.send("inner;");
        inner = waitFor(L";", 3600000);
        peer.send("end");
    });
    EXPECT_EQ(waitFor(L"end", 3600000), (Outcome{true, "outer end"}));
    EXPECT_EQ(inner, (Outcome{true, "inner;"}));
}

// As a terminal empties the stream in every tick.
TEST_F(WaitingTest, WhatComesIsForTheWait) {
    stream->put_EchoWindow(window.number());
    window.post([&] {
        peer.send("OK");
        while (window.shown() != L"OK" && stream->ClearReadBuffer() == S_OK)
            continue;
    });
    EXPECT_EQ(waitFor(L"OK", 100), (Outcome{true, "OK"}));
}

TEST_F(WaitingTest, AWriteThatNobodyTakesTimesOut) {
    const TimeScale scale(L"100");
    connect();
    VARIANT_BOOL written = VARIANT_TRUE;
    const Bstr much(std::wstring(64 * 1024 * 1024, L'x'));
    EXPECT_EQ(stream->WriteString(much.get(), VARIANT_FALSE, 10000, &written), S_OK);
    EXPECT_EQ(written, VARIANT_FALSE);
    EXPECT_TRUE(isOpen());
}

}  // namespace
}  // namespace kel::bench::test
