// The windows of a script's questions, where a form scrolls, or none can open.
#include "com/variant.h"
#include "script/question_dialog.h"
#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/dialog_driver.h"

namespace kel::test {
namespace {

// A field of the open form.
HWND field(DialogDriver& user, int row) {
    return user.control(script::QuestionDialog::kFirstField + row);
}

// Presses a key that moves the focus, and waits until it has moved.
void tab(DialogDriver& user, WORD modifier = 0) {
    const HWND before = user.focus();
    user.key(VK_TAB, modifier);
    user.waitUntil("the focus", [&] { return user.focus() != before; });
}

std::string form(int rows) {
    std::string script = "#DIALOG \"Fifty\"\n";
    for (int i = 0; i < rows; ++i) {
        const std::string name = "v" + std::to_string(i);
        const char* const kinds[] = {"input(\"Value ", "check(\"Option ", "select(\"Choice "};
        script += name + "=" + kinds[i % 3] + std::to_string(i) + "\", \"1\", \"two\")\n";
    }
    return script + "#ENDDIALOG";
}

using QuestionTest = PreprocessorTest;

TEST_F(QuestionTest, FiftyControlsScroll) {
    const DialogDriver user([](DialogDriver& driver) {
        const HWND form = driver.waitFor(L"Fifty");
        RECT place{};
        GetWindowRect(form, &place);
        EXPECT_LE(place.bottom - place.top, GetSystemMetrics(SM_CYSCREEN));
        const HWND last = field(driver, 49);
        const HWND pane = GetParent(last);
        const auto isInView = [&](HWND control) {
            RECT view{};
            RECT common{};
            RECT area{};
            GetClientRect(pane, &view);
            MapWindowPoints(pane, nullptr, reinterpret_cast<POINT*>(&view), 2);
            GetWindowRect(control, &area);
            IntersectRect(&common, &area, &view);
            return EqualRect(&common, &area) != FALSE;
        };
        const HWND first = field(driver, 0);
        EXPECT_EQ(driver.focus(), first);
        EXPECT_TRUE(isInView(first));
        EXPECT_FALSE(isInView(last));
        while (driver.focus() != last)
            tab(driver, VK_SHIFT);
        driver.waitUntil("the last one in view", [&] { return isInView(last); });
        const HWND choice = field(driver, 47);
        for (const HWND under : {choice, last, form}) {
            driver.send(pane, WM_VSCROLL, SB_BOTTOM);
            EXPECT_FALSE(isInView(first));
            for (int notch = 0; notch < 20; ++notch)
                driver.send(under, WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA));
            EXPECT_TRUE(isInView(first));
        }
        driver.send(pane, WM_VSCROLL, SB_PAGEDOWN);
        EXPECT_FALSE(isInView(first));
        for (const int row : {0, 24, 25, 48, 23, 1}) {
            driver.send(form, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field(driver, row)), TRUE);
            EXPECT_TRUE(isInView(field(driver, row))) << row;
        }
        driver.key(VK_RETURN);
    });
    EXPECT_TRUE(run(form(50)));
    com::ComPtr<IFlatCollection> variables;
    com::Variant last;
    com::check(preprocessor_->get_Variables(&variables));
    com::check(variables->get_Item(com::Variant(49L).get(), last.put()));
    EXPECT_EQ(last.toText(), "1");
}

TEST_F(QuestionTest, NoFormOpensWhenNoneCan) {
    EXPECT_FALSE(run(form(1001)));
}

}  // namespace
}  // namespace kel::test
