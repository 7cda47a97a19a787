// The status dialog, shown by a caller that works and never runs a message loop.
#include <commctrl.h>

#include "com/message_loop.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/test_window.h"

namespace kel::test {
namespace {

class StatusTest : public testing::Test {
protected:
    static HWND window() { return FindWindowW(L"#32770", L"Status"); }
    static HWND control(int identifier) { return GetDlgItem(window(), identifier); }
    static bool isShown(int identifier) { return IsWindowVisible(control(identifier)); }

    static std::wstring message() {
        wchar_t text[64] = L"";
        GetDlgItemTextW(window(), IDC_STATUS_MESSAGE, text, 64);
        return text;
    }

    static LONG barPosition() {
        return static_cast<LONG>(SendMessageW(control(IDC_STATUS_BAR), PBM_GETPOS, 0, 0));
    }

    static RECT place(HWND window) {
        RECT place{};
        GetWindowRect(window, &place);
        return place;
    }

    // What of a window waits to be painted.
    static bool isPainted(HWND window) { return !GetUpdateRect(window, nullptr, FALSE); }

    bool isCancelled() const {
        VARIANT_BOOL cancelled = 5;
        EXPECT_EQ(dialog_->get_Cancelled(&cancelled), S_OK);
        return cancelled == VARIANT_TRUE;
    }

    void TearDown() override {
        dialog_.Reset();
        EXPECT_EQ(window(), nullptr);
    }

    com::ComPtr<IStatusDialog2> dialog_ = kelUtils().create<IStatusDialog2>(CLSID_StatusDialog);
};

TEST_F(StatusTest, ShowsWhatWasSetBefore) {
    const HWND owner = CreateWindowW(L"STATIC", L"", WS_POPUP | WS_VISIBLE, 100, 100, 500, 400,
                                     nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(dialog_->Hide(), S_OK);
    EXPECT_EQ(dialog_->put_hwndParent(HandleToLong(owner)), S_OK);
    EXPECT_EQ(dialog_->put_Message(com::Bstr(L"Reading A&B").get()), S_OK);
    EXPECT_EQ(dialog_->SetProgressRange(-10, 100000), S_OK);
    EXPECT_EQ(dialog_->put_Position(70000), S_OK);
    EXPECT_EQ(dialog_->put_ShowCancel(1), S_OK);
    EXPECT_EQ(window(), nullptr);
    ASSERT_EQ(dialog_->Show(), S_OK);
    EXPECT_EQ(message(), L"Reading A&B");
    EXPECT_EQ(barPosition(), 70000);
    EXPECT_EQ(SendMessageW(control(IDC_STATUS_BAR), PBM_GETRANGE, TRUE, 0), -10);
    EXPECT_TRUE(isShown(IDCANCEL));
    EXPECT_EQ(faultsOf(window()), std::vector<std::string>());
    EXPECT_EQ(GetWindow(window(), GW_OWNER), owner);
    const RECT own = place(window());
    EXPECT_NEAR((own.left + own.right) / 2, 350, 1);
    EXPECT_NEAR((own.top + own.bottom) / 2, 300, 1);
    DestroyWindow(owner);
    EXPECT_EQ(window(), nullptr);
    EXPECT_FALSE(isCancelled());
    EXPECT_EQ(dialog_->Show(), S_OK);
    EXPECT_EQ(GetWindow(window(), GW_OWNER), nullptr);
}

TEST_F(StatusTest, IsAsHighAsItsPartsNeed) {
    const auto height = [] { return place(window()).bottom - place(window()).top; };
    const auto cancelTop = [] { return place(control(IDCANCEL)).top - place(window()).top; };
    dialog_->Show();
    EXPECT_EQ(message(), L"");
    EXPECT_FALSE(isShown(IDC_STATUS_BAR));
    EXPECT_FALSE(isShown(IDCANCEL));
    const LONG least = height();
    EXPECT_EQ(dialog_->put_ShowCancel(VARIANT_TRUE), S_OK);
    const LONG higher = cancelTop();
    EXPECT_EQ(height() - least, place(control(IDCANCEL)).bottom - place(control(IDCANCEL)).top);
    EXPECT_EQ(dialog_->put_Position(1), S_OK);
    EXPECT_TRUE(isShown(IDC_STATUS_BAR));
    const LONG distance = place(control(IDCANCEL)).top - place(control(IDC_STATUS_BAR)).top;
    EXPECT_EQ(cancelTop() - higher, distance);
    // What is there already is not laid out again: a user's own size would be lost.
    MoveWindow(window(), 0, 0, 300, 300, FALSE);
    EXPECT_EQ(dialog_->put_ShowCancel(1), S_OK);
    EXPECT_EQ(dialog_->put_Position(2), S_OK);
    EXPECT_EQ(height(), 300);
    EXPECT_EQ(dialog_->put_ShowCancel(VARIANT_FALSE), S_OK);
    EXPECT_EQ(height() - least, distance);
}

TEST_F(StatusTest, ChangesAreSeenAtOnce) {
    dialog_->put_ShowCancel(VARIANT_TRUE);
    dialog_->put_Position(0);
    dialog_->Show();
    const HWND first = window();
    EXPECT_TRUE(isPainted(window()));
    dialog_->put_Message(com::Bstr(L"Second").get());
    EXPECT_EQ(message(), L"Second");
    EXPECT_TRUE(isPainted(control(IDC_STATUS_MESSAGE)));
    dialog_->put_Position(33);
    EXPECT_EQ(barPosition(), 33);
    EXPECT_TRUE(isPainted(control(IDC_STATUS_BAR)));
    dialog_->put_Position(500);
    dialog_->SetProgressRange(0, 1000);
    EXPECT_EQ(barPosition(), 500);
    dialog_->Hide();
    EXPECT_FALSE(IsWindowVisible(first));
    dialog_->Show();
    EXPECT_EQ(window(), first);
    EXPECT_TRUE(IsWindowVisible(first));
}

TEST_F(StatusTest, CancelIsLearntWithoutAMessageLoop) {
    const auto sink = com::makeObject<EventSink>();
    DWORD cookie = 0;
    com::check(
        eventsOf(dialog_.Get(), DIID__IStatusDialogEvents)->Advise(sink->controlling(), &cookie));
    bench::test::TestWindow other;
    bool ran = false;
    other.post([&] { ran = true; });
    dialog_->put_ShowCancel(VARIANT_TRUE);
    dialog_->Show();
    EXPECT_FALSE(isCancelled());
    PostMessageW(control(IDCANCEL), BM_CLICK, 0, 0);
    EXPECT_TRUE(isCancelled());
    EXPECT_TRUE(isCancelled());
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(sink->events, "1\n");
    EXPECT_FALSE(ran) << "the host's messages are its own business";
    com::runWaitingMessages();
    EXPECT_TRUE(ran);

    dialog_->Show();
    EXPECT_FALSE(isCancelled());
    PostMessageW(window(), WM_COMMAND, IDOK, 0);
    EXPECT_FALSE(isCancelled());
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(sink->events, "1\n");

    dialog_->Show();
    PostMessageW(control(IDC_STATUS_MESSAGE), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(isCancelled());
    EXPECT_EQ(sink->events, "1\n1\n");
}

TEST_F(StatusTest, TheEndOfTheProgramIsLeftToTheHost) {
    dialog_->Show();
    PostQuitMessage(3);
    EXPECT_FALSE(isCancelled());
    MSG message{};
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 3u);
}

TEST_F(StatusTest, TheLastReferenceMayGoAtAnyTime) {
    const auto sink = com::makeObject<EventSink>();
    DWORD cookie = 0;
    com::check(
        eventsOf(dialog_.Get(), DIID__IStatusDialogEvents)->Advise(sink->controlling(), &cookie));
    sink->onEvent = [&](DISPID) {
        dialog_.Reset();
        return S_OK;
    };
    dialog_->Show();
    PostMessageW(window(), WM_COMMAND, IDCANCEL, 0);
    IStatusDialog2* dialog = dialog_.Get();
    VARIANT_BOOL cancelled = VARIANT_FALSE;
    EXPECT_EQ(dialog->get_Cancelled(&cancelled), S_OK);
    EXPECT_EQ(cancelled, VARIANT_TRUE);
    EXPECT_FALSE(dialog_);

    // While it is shown: its window goes with it.
    dialog_ = kelUtils().create<IStatusDialog2>(CLSID_StatusDialog);
    dialog_->Show();
}

}  // namespace
}  // namespace kel::test
