// The built-in words beyond what the cases tell: the clock, files, the message box.
#include <filesystem>
#include <fstream>

#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/dialog_driver.h"

namespace kel::test {
namespace {

using WordsTest = PreprocessorTest;

TEST_F(WordsTest, DateAndTimeAreTheLocalOnes) {
    // Twice, should the second change in between.
    std::string expected[2];
    for (std::string& text : expected) {
        SYSTEMTIME now;
        GetLocalTime(&now);
        char line[64];
        snprintf(line, sizeof line, "%04d/%02d/%02d %02d:%02d:%02d", now.wYear, now.wMonth,
                 now.wDay, now.wHour, now.wMinute, now.wSecond);
        text = line;
        if (&text == expected) run("##DATE() ##TIME()");
    }
    const std::string work = link_.takeWork();
    EXPECT_TRUE(work.find(expected[0]) != work.npos || work.find(expected[1]) != work.npos) << work;
}

// The user's folder is searched before the system's; a folder of that name is no script.
TEST_F(WordsTest, RunScriptLooksIntoBothFolders) {
    const auto root = std::filesystem::temp_directory_path() /
                      ("kel_scripts_" + std::to_string(GetCurrentProcessId()));
    const auto user = root / "user";
    const auto system = root / "system";
    std::filesystem::create_directories(user / "folder.txt");
    std::filesystem::create_directories(system);
    for (const auto& file :
         {user / "both.txt", system / "both.txt", system / "folder.txt", system / "system.txt"}) {
        std::ofstream(file) << "x";
    }
    com::check(preprocessor_->put_ScriptPath(com::Bstr(user.wstring()).get()));
    com::check(preprocessor_->put_SystemPath(com::Bstr(system.wstring()).get()));
    for (const auto& [name, folder] :
         {std::pair("both.txt", user), {"folder.txt", system}, {"system.txt", system}}) {
        EXPECT_TRUE(run(std::string("#RUNSCRIPT ") + name));
        EXPECT_EQ(link_.takeWork(), "Link.RunCommandFile \"" + (folder / name).string() + "\"\n");
    }
    EXPECT_FALSE(run("#RUNSCRIPT none.txt"));
    EXPECT_EQ(link_.takeWork(), report("Can't find file ", (system / "none.txt").string()));
    link_.answers["Link.RunCommandFile"] = {false};
    EXPECT_FALSE(run("#RUNSCRIPT both.txt"));
    link_.runFile = [](BSTR, VARIANT_BOOL*) { return E_ABORT; };
    VARIANT_BOOL result;
    EXPECT_EQ(preprocessor_->PreprocessAndRun(com::Bstr(L"#RUNSCRIPT both.txt").get(), &result),
              E_ABORT);
    std::filesystem::remove_all(root);
}

// Waits for the box of MSGBOX, notes what it shows and presses a button.
struct BoxDriver {
    std::wstring text;
    bool hasWarningIcon = false;
    HWND owner = nullptr;
    DialogDriver user;

    explicit BoxDriver(int button)
        : user([this, button](auto& driver) { drive(driver, button); }) {}

    void drive(DialogDriver& driver, int button) {
        const HWND box = driver.waitFor(L"Message");
        wchar_t shown[100] = {};
        for (HWND child = nullptr; (child = FindWindowExW(box, child, L"STATIC", nullptr));) {
            const LRESULT icon = driver.send(child, STM_GETICON);
            const HICON warning = LoadIconW(nullptr, MAKEINTRESOURCEW(32515));
            hasWarningIcon |= icon && reinterpret_cast<HICON>(icon) == warning;
            if (!icon) driver.send(child, WM_GETTEXT, 100, reinterpret_cast<LPARAM>(shown));
        }
        text = shown;
        owner = GetWindow(box, GW_OWNER);
        driver.press(button);
    }
};

TEST_F(WordsTest, MessageBoxAsksTheUser) {
    const HWND window = CreateWindowW(L"STATIC", L"", WS_OVERLAPPED, 0, 0, 50, 50, nullptr, nullptr,
                                      nullptr, nullptr);
    com::check(preprocessor_->put_ParentWindow(reinterpret_cast<LONG_PTR>(window)));
    const struct {
        const char* script;
        int button;
        bool result;
        const wchar_t* text;
    } rows[] = {{"#MSGBOX \"Fit the cable\"", IDOK, true, L"Fit the cable"},
                {"#MSGBOX", IDCANCEL, false, L""}};
    for (const auto& row : rows) {
        {
            BoxDriver driver(row.button);
            EXPECT_EQ(run(row.script), row.result);
            // The driver has pressed, so all it notes is there.
            EXPECT_EQ(driver.text, row.text);
            EXPECT_TRUE(driver.hasWarningIcon);
            EXPECT_EQ(driver.owner, window);
        }
        EXPECT_EQ(link_.takeWork(), row.result ? "" : report("Execution canceled!"));
        EXPECT_FALSE(isCancelled());
    }
    // A window that is gone is no owner.
    DestroyWindow(window);
    BoxDriver driver(IDOK);
    EXPECT_TRUE(run("#MSGBOX 1"));
    EXPECT_EQ(driver.owner, nullptr);
}

// Counts the windows that this thread makes.
class WindowCounter {
public:
    WindowCounter() : hook_(SetWindowsHookExW(WH_CBT, count, nullptr, GetCurrentThreadId())) {
        created = 0;
    }
    ~WindowCounter() { UnhookWindowsHookEx(hook_); }

    static inline int created = 0;

private:
    static LRESULT CALLBACK count(int code, WPARAM window, LPARAM details) {
        if (code == HCBT_CREATEWND) ++created;
        return CallNextHookEx(nullptr, code, window, details);
    }

    HHOOK hook_;
};

TEST_F(WordsTest, UnattendedNoQuestionMakesAWindow) {
    const WindowCounter windows;
    const auto runsAll = [&] {
        int ran = 0;
        for (const char* script :
             {"#MSGBOX X", "@x=input(\"X\")", "@(\"X\")", "@x=CHECK(\"X\")", "@select(\"X\", 1)",
              "#DIALOG\nx=input(\"X\")\ncheck(\"X\")\nx=select(\"X\", 1)\n#ENDDIALOG"}) {
            ran += run(script);
        }
        return ran;
    };
    com::check(preprocessor_->put_Unattended(VARIANT_TRUE));
    EXPECT_EQ(runsAll(), 0);
    com::check(preprocessor_->SetAnswer(com::Bstr(L"msgbox").get(), com::Bstr(L"OK").get()));
    com::check(preprocessor_->SetAnswer(com::Bstr(L"x").get(), com::Bstr(L"1").get()));
    EXPECT_EQ(runsAll(), 6);
    EXPECT_EQ(WindowCounter::created, 0);

    com::check(preprocessor_->put_Unattended(VARIANT_FALSE));
    BoxDriver driver(IDOK);
    EXPECT_TRUE(run("#MSGBOX X"));
    EXPECT_GT(WindowCounter::created, 0);
}

TEST_F(WordsTest, HandlersMayBeCalledFromOutside) {
    com::ComPtr<IPreprocessorExtension> words;
    ASSERT_EQ(preprocessor_.As(&words), S_OK);
    VARIANT_BOOL handled = 7;
    VARIANT_BOOL result = 7;
    com::Bstr value;
    for (const long code : {9L, -1L}) {
        EXPECT_EQ(words->DirectiveHandler(link_.communicator(), code, nullptr, &handled, &result),
                  S_OK);
        EXPECT_EQ(handled, VARIANT_FALSE);
        EXPECT_EQ(result, VARIANT_TRUE);
    }
    EXPECT_EQ(
        words->FunctionHandler(link_.communicator(), 3, nullptr, value.put(), &handled, &result),
        S_OK);
    EXPECT_EQ(handled, VARIANT_FALSE);

    // A word that waits owns the stream meanwhile, as in a run.
    link_.onCall = [&](const std::string&) { EXPECT_TRUE(isReading()); };
    link_.reply = L"n: 5.";
    EXPECT_EQ(
        words->FunctionHandler(link_.communicator(), 2, nullptr, value.put(), &handled, &result),
        S_OK);
    EXPECT_EQ(value.view(), L"5");
    EXPECT_FALSE(isReading());
    EXPECT_EQ(words->DirectiveHandler(link_.communicator(), 4, nullptr, &handled, &result),
              E_INVALIDARG);
}

}  // namespace
}  // namespace kel::test
