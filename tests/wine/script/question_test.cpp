// The windows of a script's questions, used by keyboard as by any user.
#include <fstream>

#include "script/question_dialog.h"
#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/test_window.h"

namespace kel::test {
namespace {

constexpr int kFirst = script::QuestionDialog::kFirstField;

// A field of the open form, in its pane if it has one.
HWND field(DialogDriver& user, int row) {
    const HWND pane = FindWindowExW(user.window(), nullptr, L"#32770", nullptr);
    return GetDlgItem(pane ? pane : user.window(), kFirst + row);
}

// Presses a key that moves the focus, and waits until it has arrived.
void moveTo(DialogDriver& user, HWND target, WORD modifier = 0) {
    user.key(VK_TAB, modifier);
    user.waitUntil("the focus", [&] { return user.focus() == target; });
}

std::string fifty() {
    std::string script = "#DIALOG \"Fifty\"\n";
    for (int i = 0; i < 50; ++i) {
        const std::string name = "v" + std::to_string(i);
        const char* const kinds[] = {"input(\"Value ", "check(\"Option ", "select(\"Choice "};
        script += name + "=" + kinds[i % 3] + std::to_string(i) + "\", \"1\", \"two\")\n";
    }
    return script + "#ENDDIALOG";
}

class QuestionTest : public PreprocessorTest {
protected:
    std::string variable(std::wstring_view name) const {
        com::Bstr value;
        com::check(preprocessor_->get_Variable(com::Bstr(name).get(), value.put()));
        return com::narrow(value.get());
    }
};

TEST_F(QuestionTest, TheExampleIsAnsweredByKeyboardAlone) {
    std::ifstream file(KEL_EXAMPLES_FOLDER "/deploy-form.kel");
    const std::string script{std::istreambuf_iterator<char>(file), {}};
    const DialogDriver user([](DialogDriver& driver) {
        const HWND form = driver.waitFor(L"Deployment");
        EXPECT_EQ(faultsOf(form), std::vector<std::string>());
        EXPECT_EQ(driver.focus(), field(driver, 0));
        driver.type(L"Pier");  // in the place of what is selected
        moveTo(driver, field(driver, 1));
        driver.key(VK_DOWN);
        moveTo(driver, field(driver, 2));
        driver.type(L"600");
        moveTo(driver, field(driver, 3));
        moveTo(driver, field(driver, 4));
        driver.key(VK_SPACE);
        driver.key(VK_RETURN);
    });
    EXPECT_TRUE(run(script));
    std::string lines;
    for (const std::string& call : link_.calls)
        if (call.starts_with("WriteString \"set ")) lines += call + "\n";
    EXPECT_EQ(lines,
              "WriteString \"set station Pier\" 0\nWriteString \"set interval 600\" 0\n"
              "WriteString \"set declination -1.5\" 0\nWriteString \"set burst 1024\" 0\n"
              "WriteString \"set rate 4\" 0\n");
    EXPECT_EQ(variable(L"erase"), "1");
}

TEST_F(QuestionTest, ControlsAreOfTheirClassesAndStyles) {
    const struct {
        const wchar_t* name;
        LONG style;
    } expected[] = {
        {L"Edit", WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL | ES_NOHIDESEL},
        {L"Button", WS_TABSTOP | BS_AUTOCHECKBOX | BS_LEFTTEXT},
        {L"ComboBox", WS_VSCROLL | WS_TABSTOP | CBS_DROPDOWNLIST | CBS_HASSTRINGS},
    };
    const DialogDriver user([&](DialogDriver& driver) {
        const HWND form = driver.waitFor(L"T");
        const auto font = driver.send(form, WM_GETFONT);
        for (int row = 0; row < 3; ++row) {
            const HWND control = field(driver, row);
            const HWND caption = GetWindow(control, GW_HWNDPREV);
            wchar_t name[32] = L"";
            GetClassNameW(control, name, 32);
            EXPECT_STREQ(name, expected[row].name);
            // The controls take away the styles of what they draw themselves.
            constexpr LONG kOwn = WS_BORDER | WS_VSCROLL;
            EXPECT_EQ(GetWindowLongW(control, GWL_STYLE) & ~kOwn,
                      (expected[row].style | WS_CHILD | WS_VISIBLE) & ~kOwn);
            EXPECT_EQ(GetWindowLongW(caption, GWL_STYLE),
                      static_cast<LONG>(WS_CHILD | WS_VISIBLE | SS_CENTERIMAGE));
            EXPECT_EQ(driver.send(control, WM_GETFONT), font);
            EXPECT_EQ(driver.send(caption, WM_GETFONT), font);
        }
        driver.press(IDOK);
    });
    EXPECT_TRUE(run("#DIALOG \"T\"\ninput(\"a\")\ncheck(\"b\")\nselect(\"c\", \"d\")\n#ENDDIALOG"));
}

TEST_F(QuestionTest, EveryKindOfOneControlFormGivesItsResult) {
    const struct {
        const wchar_t* script;
        std::function<void(DialogDriver&)> answer;
        const wchar_t* caption;
        const wchar_t* result;
    } cases[] = {
        {L"@v=\"100 °\"\n@v=input(\"'Kühlung' & Größe\", \"x\")", [](DialogDriver&) {},
         L"'Kühlung' && Größe", L"100 °"},
        {L"@v=input(\"Text\")", [](DialogDriver& user) { user.type(L"\"Süd\", 'ß'"); }, L"Text",
         L"\"Süd\", 'ß'"},
        {L"@v=check(\"On\", \"1\")", [](DialogDriver&) {}, L"On", L"1"},
        {L"@v=(\"Text\", \"i\")", [](DialogDriver&) {}, L"Text", L"i"},
        {L"@v=check(\"On\", \"1\")", [](DialogDriver& user) { user.key(VK_SPACE); }, L"On", L"0"},
        {L"@v=\"ZWEI\"\n@v=select(\"Which\", \"eins\", \"zwei\", \"drei\")", [](DialogDriver&) {},
         L"Which", L"zwei"},
        {L"@v=select(\"Which\", \"ä\", \"ö\")", [](DialogDriver& user) { user.key(VK_END); },
         L"Which", L"ö"},
        {L"@v=select(\"Nothing\")", [](DialogDriver&) {}, L"Nothing", L""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(com::narrow(std::wstring_view(row.script)));
        const DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(L"Input");
            wchar_t caption[64] = L"";
            InternalGetWindowText(GetWindow(field(driver, 0), GW_HWNDPREV), caption, 64);
            EXPECT_STREQ(caption, row.caption);
            EXPECT_EQ(driver.focus(), field(driver, 0));
            row.answer(driver);
            driver.key(VK_RETURN);
        });
        com::check(preprocessor_->ClearVariables());
        EXPECT_TRUE(runWide(row.script));
        EXPECT_EQ(variable(L"v"), com::narrow(std::wstring_view(row.result)));
    }
}

TEST_F(QuestionTest, CancellingStopsTheScript) {
    const std::function<void(DialogDriver&)> ways[] = {
        [](DialogDriver& user) { user.key(VK_ESCAPE); },
        [](DialogDriver& user) { user.press(IDCANCEL); },
        [](DialogDriver& user) { PostMessageW(user.window(), WM_CLOSE, 0, 0); },
    };
    for (const auto& way : ways) {
        for (const bool isBlock : {true, false}) {
            const DialogDriver user([&](DialogDriver& driver) {
                driver.waitFor(isBlock ? L"Block" : L"Input");
                way(driver);
            });
            EXPECT_FALSE(run(isBlock ? "#DIALOG \"Block\"\nv=input(\"a\")\n#ENDDIALOG\nx"
                                     : "@v=input(\"a\")\nx"));
            EXPECT_EQ(link_.takeWork(),
                      isBlock ? "" : report("Error evaluating expression:", "input"));
            EXPECT_THROW(variable(L"v"), com::Error);
        }
    }
}

// While it is open the host may call anything.
TEST_F(QuestionTest, AnOpenFormSurvivesItsHost) {
    VARIANT_BOOL result = VARIANT_TRUE;
    HRESULT second = S_OK;
    const auto start = [&] {
        IPreprocessorControl* preprocessor = preprocessor_.Get();
        return preprocessor->PreprocessAndRun(
            com::Bstr(L"#DIALOG \"Open\"\nv=input(\"a\")\n#ENDDIALOG").get(), &result);
    };
    bench::test::TestWindow host;
    host.post([&] {
        VARIANT_BOOL other = VARIANT_TRUE;
        second = preprocessor_->PreprocessAndRun(com::Bstr(L"x").get(), &other);
        EXPECT_EQ(other, VARIANT_FALSE);
        preprocessor_->Cancel();
    });
    EXPECT_EQ(start(), S_OK);
    EXPECT_EQ(second, HRESULT_FROM_WIN32(ERROR_BUSY));
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_TRUE(isCancelled());

    bool isReleased = false;
    host.post([&] {
        preprocessor_.Reset();
        isReleased = true;
    });
    const DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(L"Open");
        driver.waitUntil("the last release", [&] { return isReleased; });
        driver.press(IDOK);
    });
    EXPECT_EQ(start(), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
}

TEST_F(QuestionTest, TheOwnerMayBeGoneOrGo) {
    const auto makeOwner = [] {
        return CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr,
                             nullptr);
    };
    const HWND owner = makeOwner();
    com::check(preprocessor_->put_ParentWindow(HandleToLong(owner)));
    bench::test::TestWindow host;
    host.post([&] {
        EXPECT_FALSE(IsWindowEnabled(owner));
        DestroyWindow(owner);
    });
    EXPECT_FALSE(run("#DIALOG \"Owned\"\nv=input(\"a\")\n#ENDDIALOG"));
    const DialogDriver user([](DialogDriver& driver) {
        driver.waitFor(L"");
        EXPECT_EQ(driver.focus(), driver.control(IDOK));
        driver.key(VK_RETURN);
    });
    EXPECT_TRUE(run("#DIALOG\n#ENDDIALOG"));
}

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
        const auto waitForView = [&](HWND control) {
            driver.waitUntil("a control in view", [&] { return isInView(control); });
        };
        const HWND first = field(driver, 0);
        EXPECT_EQ(driver.focus(), first);
        EXPECT_TRUE(isInView(first));
        EXPECT_FALSE(isInView(last));
        moveTo(driver, driver.control(IDCANCEL), VK_SHIFT);
        moveTo(driver, driver.control(IDOK), VK_SHIFT);
        moveTo(driver, last, VK_SHIFT);
        waitForView(last);
        const HWND choice = field(driver, 47);
        for (const HWND under : {choice, last, form}) {
            driver.send(pane, WM_VSCROLL, SB_BOTTOM);
            EXPECT_FALSE(isInView(first));
            for (int notch = 0; notch < 9; ++notch)
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
    EXPECT_TRUE(run(fifty()));
    EXPECT_EQ(variable(L"v48") + variable(L"v49") + variable(L"v47"), "111");
}

}  // namespace
}  // namespace kel::test
