#include <thread>

#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {
namespace {

class EchoTest : public ConnectedStreamTest {
protected:
    void SetUp() override {
        ConnectedStreamTest::SetUp();
        ASSERT_EQ(stream->put_EchoWindow(window.number()), S_OK);
    }

    TestWindow window;
};

TEST_F(EchoTest, ShowsTextsOfTheHostAndTheConnection) {
    EXPECT_EQ(stream->Echo(Bstr(L"\r\nERROR: ").get()), S_OK);
    EXPECT_EQ(stream->EchoConnectionInfo(), S_OK);
    EXPECT_EQ(stream->Close(), S_OK);
    EXPECT_EQ(stream->EchoConnectionInfo(), S_OK);
    EXPECT_EQ(window.shown(), L"\r\nERROR: \r\n127.0.0.1:" + std::wstring(peer.port().view()) +
                                  L"\r\n\r\nNot connected\r\n");
}

TEST_F(EchoTest, ReachesAWindowOfAnotherThread) {
    HANDLE ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::wstring shown;
    HWND handle = nullptr;
    std::thread owner([&] {
        TestWindow other;
        handle = other.handle();
        SetEvent(ready);
        MSG message;
        while (other.shown().size() < 5 && GetMessageW(&message, nullptr, 0, 0) > 0) {
        }
        shown = other.shown();
    });
    WaitForSingleObject(ready, INFINITE);
    CloseHandle(ready);
    ASSERT_EQ(stream->put_EchoWindow(HandleToLong(handle)), S_OK);
    arrive("hello");
    PostMessageW(handle, WM_NULL, 0, 0);
    owner.join();
    EXPECT_EQ(shown, L"hello");
}

TEST_F(EchoTest, AFullEditControlLosesItsOldestLines) {
    const HWND edit = CreateWindowW(L"EDIT", L"", ES_MULTILINE | ES_AUTOVSCROLL, 0, 0, 100, 100,
                                    HWND_MESSAGE, nullptr, nullptr, nullptr);
    SendMessageW(edit, EM_LIMITTEXT, 400, 0);
    ASSERT_EQ(stream->put_EchoWindow(HandleToLong(edit)), S_OK);
    for (int i = 0; i < 100; ++i)
        arrive("line " + std::to_string(i) + "\r\n"), stream->ClearReadBuffer();

    wchar_t content[500];
    const std::wstring shown(content, GetWindowTextW(edit, content, 500));
    EXPECT_GE(shown.size(), 250u);
    EXPECT_LE(shown.size(), 400u);
    EXPECT_TRUE(shown.starts_with(L"line ")) << com::narrow(shown);
    EXPECT_TRUE(shown.ends_with(L"line 98\r\nline 99\r\n")) << com::narrow(shown);
    DestroyWindow(edit);
}

}  // namespace
}  // namespace kel::bench::test
