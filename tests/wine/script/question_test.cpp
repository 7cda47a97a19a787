// The windows of a script's questions, used by keyboard as by any user.
#include <fstream>
#include <map>

#include "com/variant.h"
#include "script/question_dialog.h"
#include "tests/support/cases.h"
#include "tests/support/project_file.h"
#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/test_window.h"

namespace kel::test {
namespace {

// A field of the open form, in its pane if it has one.
HWND field(DialogDriver& user, int row) {
    const HWND pane = FindWindowExW(user.window(), nullptr, L"#32770", nullptr);
    return GetDlgItem(pane ? pane : user.window(), script::QuestionDialog::kFirstField + row);
}

// Presses a key that moves the focus, and waits until it has moved.
void tab(DialogDriver& user, WORD modifier = 0) {
    const HWND before = user.focus();
    user.key(VK_TAB, modifier);
    user.waitUntil("the focus", [&] { return user.focus() != before; });
}

// What a user does: a word, and a text after a blank.
void act(DialogDriver& user, std::string_view line) {
    const std::string_view word = line.substr(0, line.find(' '));
    const std::wstring text =
        com::widen(line.substr(std::min(word.size() + 1, line.size())), CP_UTF8);
    const std::map<std::string_view, WORD> keys = {{"space", VK_SPACE},
                                                   {"down", VK_DOWN},
                                                   {"end", VK_END},
                                                   {"enter", VK_RETURN},
                                                   {"escape", VK_ESCAPE}};
    if (word == "wait") {
        user.waitFor(text);
    } else if (word == "type") {
        user.type(text);
    } else if (word == "tab") {
        tab(user);
    } else if (word == "cancel") {
        user.press(IDCANCEL);
    } else if (word == "close") {
        PostMessageW(user.window(), WM_CLOSE, 0, 0);
    } else if (word == "caption") {
        wchar_t caption[64] = L"";
        InternalGetWindowText(GetWindow(user.focus(), GW_HWNDPREV), caption, 64);
        EXPECT_EQ(caption, text);
    } else {
        user.key(keys.at(word));
    }
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

class QuestionTest : public PreprocessorTest {
protected:
    // One "name=value" a line.
    std::string variables() const {
        com::ComPtr<IFlatCollection> all;
        com::check(preprocessor_->get_Variables(&all));
        long count = 0;
        com::check(all->get_Count(&count));
        std::string text;
        for (long i = 0; i < count; ++i) {
            com::Bstr name;
            com::Variant value;
            com::check(all->get_Name(i, name.put()));
            com::check(all->get_Item(com::Variant(i).get(), value.put()));
            text += com::narrow(name.view(), CP_UTF8) + "=" +
                    com::narrow(com::widen(value.toText()), CP_UTF8) + "\n";
        }
        return text;
    }
};

TEST_F(QuestionTest, Cases) {
    for (const Case& row : readCases("tests/wine/script/questions.txt")) {
        SCOPED_TRACE(testing::PrintToString(row));
        const Step& step = row.steps.front();
        com::check(preprocessor_->ClearVariables());
        const DialogDriver user([&](DialogDriver& driver) {
            for (const std::string& line : step.settings)
                act(driver, line);
        });
        const bool result = runWide(com::widen(step.text(), CP_UTF8));
        EXPECT_EQ((result ? "true\n" : "false\n") + variables() + link_.takeWork(), step.expected);
    }
}

TEST_F(QuestionTest, TheExampleIsAnsweredByKeyboardAlone) {
    std::ifstream file(projectFile("examples/deploy-form.kel"));
    const std::string script{std::istreambuf_iterator<char>(file), {}};
    const DialogDriver user([](DialogDriver& driver) {
        act(driver, "wait Deployment");
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        for (const char* line :
             {"type Pier", "tab", "down", "tab", "type 600", "tab", "tab", "space", "enter"})
            act(driver, line);
    });
    EXPECT_TRUE(run(script));
    EXPECT_EQ(variables(), "place=Pier\nplan=burst\ninterval=600\ndeclination=-1.5\nerase=1\n");
    const std::string work = link_.takeWork();
    EXPECT_NE(work.find("\"set station Pier\""), work.npos) << work;
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
    const HWND owner =
        CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    com::check(preprocessor_->put_ParentWindow(HandleToLong(owner)));
    bench::test::TestWindow host;
    host.post([&] {
        EXPECT_FALSE(IsWindowEnabled(owner));
        DestroyWindow(owner);
    });
    EXPECT_FALSE(run("#DIALOG \"Owned\"\nv=input(\"a\")\n#ENDDIALOG"));
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
    EXPECT_TRUE(variables().ends_with("v47=1\nv48=1\nv49=1\n")) << variables();
}

TEST_F(QuestionTest, NoFormOpensWhenNoneCan) {
    EXPECT_FALSE(run(form(1001)));
    const auto extension = install(L"STOP", true);
    extension->onCall = [&](long, IFlatCollection*) -> Answer {
        com::check(preprocessor_->Cancel());
        return {};
    };
    EXPECT_FALSE(run("#DIALOG \"Cancelled\"\nSTOP()\nv=input(\"a\")\n#ENDDIALOG"));
    EXPECT_TRUE(isCancelled());
}

}  // namespace
}  // namespace kel::test
