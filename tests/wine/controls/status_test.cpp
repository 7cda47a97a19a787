// What scenes cannot say of the status dialog: where it is, and what it leaves to its host.
#include <gtest/gtest.h>

#include "com/message_loop.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/test_window.h"

namespace kel::test {
namespace {

class StatusTest : public testing::Test {
protected:
    static HWND window() { return FindWindowW(L"#32770", L"Status"); }
    static RECT place(HWND window) {
        RECT place{};
        GetWindowRect(window, &place);
        return place;
    }

    const com::ComPtr<IStatusDialog2> dialog_ =
        kelUtils().create<IStatusDialog2>(CLSID_StatusDialog);
};

TEST_F(StatusTest, IsInTheMiddleOfItsOwner) {
    const HWND owner = CreateWindowW(L"STATIC", L"", WS_POPUP | WS_VISIBLE, 100, 100, 500, 400,
                                     nullptr, nullptr, nullptr, nullptr);
    dialog_->put_hwndParent(HandleToLong(owner));
    dialog_->Show();
    EXPECT_EQ(GetWindow(window(), GW_OWNER), owner);
    const RECT own = place(window());
    EXPECT_NEAR((own.left + own.right) / 2, 350, 1);
    EXPECT_NEAR((own.top + own.bottom) / 2, 300, 1);
    DestroyWindow(owner);
    dialog_->Show();
    EXPECT_EQ(GetWindow(window(), GW_OWNER), nullptr);
}

TEST_F(StatusTest, IsAsHighAsItsPartsNeed) {
    const auto height = [] { return place(window()).bottom - place(window()).top; };
    const auto cancel = [] { return place(GetDlgItem(window(), IDCANCEL)); };
    dialog_->Show();
    const LONG least = height();
    dialog_->put_ShowCancel(VARIANT_TRUE);
    const LONG higher = cancel().top - place(window()).top;
    EXPECT_EQ(height() - least, cancel().bottom - cancel().top);
    dialog_->put_Position(1);
    const LONG distance = cancel().top - place(GetDlgItem(window(), IDC_STATUS_BAR)).top;
    EXPECT_EQ(cancel().top - place(window()).top - higher, distance);
    // What is there already is not laid out again: a user's own size would be lost.
    MoveWindow(window(), 0, 0, 300, 300, FALSE);
    dialog_->put_ShowCancel(1);
    dialog_->put_Position(2);
    EXPECT_EQ(height(), 300);
    dialog_->put_ShowCancel(VARIANT_FALSE);
    EXPECT_EQ(height() - least, distance);
}

TEST_F(StatusTest, TheMessagesOfTheHostAreItsOwnBusiness) {
    bench::test::TestWindow other;
    bool ran = false;
    other.post([&] { ran = true; });
    dialog_->Show();
    PostQuitMessage(3);
    VARIANT_BOOL cancelled = VARIANT_TRUE;
    EXPECT_EQ(dialog_->get_Cancelled(&cancelled), S_OK);
    EXPECT_EQ(cancelled, VARIANT_FALSE);
    EXPECT_FALSE(ran);
    EXPECT_FALSE(com::runWaitingMessages());
    EXPECT_TRUE(ran);
    MSG message{};
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 3u);
}

}  // namespace
}  // namespace kel::test
