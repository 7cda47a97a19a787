// keldesk as its user has it: the program itself, with the registered components, on the virtual
// instrument.
#include <gtest/gtest.h>
#include <winsock2.h>

#include <commctrl.h>
#include <commdlg.h>
#include <dlgs.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "com/handles.h"
#include "com/text.h"
#include "hosts/keldesk/resource_ids.h"
#include "resources/resource_ids.h"
#include "tests/support/project_file.h"
#include "tests/wine/support/tcp_peer.h"

namespace kel::test {
namespace {

constexpr DWORD kPatience = 20000;
constexpr int kOutput = 201;
constexpr int kCommandLine = 202;

class KeldeskTest : public testing::Test {
protected:
    ~KeldeskTest() override {
        if (!process_) return;
        TerminateProcess(process_.get(), 1);
        WaitForSingleObject(process_.get(), kPatience);
    }

    // Starts it on the instrument, with a script or without.
    void start(const std::wstring& script = {}) {
        const std::wstring address = L"127.0.0.1:" + std::wstring(server_.port().view());
        launch(L" --tcp " + address + (script.empty() ? L"" : L" \"" + script + L"\""));
        window_ = waitForWindow(L"KelDesk", address + L" - KelDesk");
    }
    void launch(const std::wstring& arguments) {
        std::wstring line =
            L"\"" + projectFile("hosts/keldesk/keldesk.exe").wstring() + L"\"" + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   std::filesystem::temp_directory_path().c_str(), &startup,
                                   &started));
        CloseHandle(started.hThread);
        process_ = com::FileHandle(started.hProcess);
        identifier_ = started.dwProcessId;
    }

    static bool waitUntil(const std::function<bool()>& holds) {
        for (const DWORD begin = GetTickCount(); GetTickCount() - begin < kPatience; Sleep(10))
            if (holds()) return true;
        return false;
    }

    // A window of the program.
    HWND find(const wchar_t* className, const std::wstring& title) const {
        for (HWND window = nullptr;
             (window = FindWindowExW(nullptr, window, className, title.c_str()));) {
            DWORD process = 0;
            GetWindowThreadProcessId(window, &process);
            if (process == identifier_ && IsWindowVisible(window)) return window;
        }
        return nullptr;
    }
    HWND waitForWindow(const wchar_t* className, const std::wstring& title) const {
        HWND window = nullptr;
        EXPECT_TRUE(waitUntil([&] { return (window = find(className, title)) != nullptr; }))
            << com::narrow(title);
        return window;
    }
    HWND part(int identifier) const {
        const HWND host = FindWindowExW(window_, nullptr, L"AtlAxWin", nullptr);
        return GetDlgItem(FindWindowExW(host, nullptr, nullptr, L"KelTerminal"), identifier);
    }

    std::wstring shown() const {
        std::wstring text(10000, L'\0');
        text.resize(static_cast<std::size_t>(SendMessageW(part(kOutput), WM_GETTEXT, text.size(),
                                                          reinterpret_cast<LPARAM>(text.data()))));
        return text;
    }
    void expectShown(const std::wstring& text) const {
        EXPECT_TRUE(waitUntil([&] { return shown().find(text) != std::wstring::npos; }))
            << com::narrow(text) << " is not in: " << com::narrow(shown());
    }

    // A part of the status bar, which writes it into the memory of its own process.
    std::wstring status(WPARAM part) const {
        wchar_t text[128] = L"";
        void* const there =
            VirtualAllocEx(process_.get(), nullptr, sizeof text, MEM_COMMIT, PAGE_READWRITE);
        const HWND bar = FindWindowExW(window_, nullptr, STATUSCLASSNAMEW, nullptr);
        SendMessageW(bar, SB_GETTEXTW, part, reinterpret_cast<LPARAM>(there));
        ReadProcessMemory(process_.get(), there, text, sizeof text - sizeof *text, nullptr);
        VirtualFreeEx(process_.get(), there, 0, MEM_RELEASE);
        return text;
    }

    void answer(const wchar_t* title, int button) const {
        const HWND question = waitForWindow(L"#32770", title);
        PostMessageW(question, WM_COMMAND, static_cast<WPARAM>(button), 0);
        EXPECT_TRUE(waitUntil([&] { return !IsWindow(question); }));
    }
    void expectExit(DWORD expected) const {
        EXPECT_EQ(WaitForSingleObject(process_.get(), kPatience), WAIT_OBJECT_0);
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(process_.get(), &code);
        EXPECT_EQ(code, expected);
    }

    static std::wstring script(const char* text) {
        const auto path = std::filesystem::temp_directory_path() / L"keldesk test.kel";
        std::ofstream(path) << text;
        return path.wstring();
    }

    bench::test::InstrumentServer server_{bench::InstrumentOptions{}};
    com::FileHandle process_;
    DWORD identifier_ = 0;
    HWND window_ = nullptr;
};

// The script that keldesk offers first.
std::wstring firstRecent() {
    wchar_t paths[4096] = L"";
    DWORD size = sizeof paths;
    RegGetValueW(HKEY_CURRENT_USER, L"Software\\KelDesk", L"RecentScripts", RRF_RT_REG_MULTI_SZ,
                 nullptr, paths, &size);
    return paths;
}

std::wstring clipboardText() {
    if (!OpenClipboard(nullptr)) return {};
    const HANDLE data = GetClipboardData(CF_UNICODETEXT);
    const auto* text = data ? static_cast<const wchar_t*>(GlobalLock(data)) : nullptr;
    const std::wstring copied = text ? text : L"";
    if (text) GlobalUnlock(data);
    CloseClipboard();
    return copied;
}

// Adds what is wrong with the mnemonics of a menu, those below it included.
void lookOver(HMENU menu, std::set<std::wstring>& faults) {
    std::set<wchar_t> mnemonics;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[100] = L"";
        GetMenuStringW(menu, static_cast<UINT>(i), text, static_cast<int>(std::size(text)),
                       MF_BYPOSITION);
        const std::wstring_view item = text;
        const auto mark = item.find(L'&');
        const bool isEntry = !item.empty() && item != L"(none)";
        if (isEntry && (mark == std::wstring_view::npos ||
                        !mnemonics.insert(static_cast<wchar_t>(towlower(item[mark + 1]))).second))
            faults.emplace(item);
        if (const HMENU below = GetSubMenu(menu, i)) lookOver(below, faults);
    }
}

TEST(KeldeskMenuTest, EveryEntryHasAKeyOfItsOwn) {
    const HMODULE program = LoadLibraryExW(projectFile("hosts/keldesk/keldesk.exe").c_str(),
                                           nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const HMENU menu = LoadMenuW(program, MAKEINTRESOURCEW(IDR_DESK));
    ASSERT_GT(GetMenuItemCount(menu), 0);
    std::set<std::wstring> faults;
    lookOver(menu, faults);
    EXPECT_EQ(faults, std::set<std::wstring>());
    DestroyMenu(menu);
    FreeLibrary(program);
}

TEST_F(KeldeskTest, SendsWhatIsTyped) {
    start();
    ASSERT_NE(part(kCommandLine), nullptr);
    SendMessageW(part(kCommandLine), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"sernum"));
    PostMessageW(GetWindow(part(kCommandLine), GW_CHILD), WM_KEYDOWN, VK_RETURN, 0);
    expectShown(L"Serial Number: D123");
    PostMessageW(window_, WM_COMMAND, IDM_COPY_OUTPUT, 0);
    EXPECT_TRUE(waitUntil([] { return clipboardText().find(L"D123") != std::wstring::npos; }));
    PostMessageW(window_, WM_COMMAND, IDM_DISCONNECT, 0);
    waitForWindow(L"KelDesk", L"KelDesk");
    PostMessageW(window_, WM_CLOSE, 0, 0);
    expectExit(0);
}

TEST_F(KeldeskTest, StaysLiveWhileAScriptWaitsAndAsksBeforeItStopsIt) {
    start(script("sernum\n#WAIT_OK 20\n#WAIT 600\n"));
    expectShown(L"Serial Number: D123");
    EXPECT_TRUE(waitUntil([&] {
        return status(1).starts_with(L"keldesk test.kel, line 2, waiting for OK, at most 1");
    })) << com::narrow(status(1));
    // The window answers, and a second run is refused.
    PostMessageW(window_, WM_COMMAND, IDM_VARIABLES, 0);
    waitForWindow(L"KelDeskList", L"Variables");
    PostMessageW(window_, WM_COMMAND, IDM_RECENT_FIRST, 0);
    PostMessageW(window_, WM_CLOSE, 0, 0);
    answer(L"KelDesk", IDNO);
    EXPECT_EQ(WaitForSingleObject(process_.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    PostMessageW(window_, WM_CLOSE, 0, 0);
    answer(L"KelDesk", IDYES);
    expectExit(0);
}

TEST_F(KeldeskTest, ListsWhatIsWrong) {
    const std::wstring path = script("@x=nosuch()\n");
    start(std::filesystem::path(path).filename());
    const HWND list = waitForWindow(L"KelDeskList", L"Errors and warnings");
    PostMessageW(list, WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitUntil([&] { return !IsWindowVisible(list); }));
    PostMessageW(window_, WM_COMMAND, IDM_FINDINGS, 0);
    EXPECT_EQ(waitForWindow(L"KelDeskList", L"Errors and warnings"), list);
    EXPECT_EQ(firstRecent(), path);
    script("@x=\"1\"\n");
    PostMessageW(window_, WM_COMMAND, IDM_RECENT_FIRST, 0);
    EXPECT_TRUE(
        waitUntil([&] { return status(2).starts_with(L"keldesk test.kel ran to its end"); }));
    EXPECT_EQ(SendMessageW(GetWindow(list, GW_CHILD), LVM_GETITEMCOUNT, 0, 0), 0);
    PostMessageW(window_, WM_CLOSE, 0, 0);
    expectExit(0);
}

// A control of a dialog, or of a part of it.
HWND inside(HWND window, int identifier) {
    HWND found = GetDlgItem(window, identifier);
    for (HWND part = GetWindow(window, GW_CHILD); part && !found;
         part = GetWindow(part, GW_HWNDNEXT))
        found = GetDlgItem(part, identifier);
    return found;
}

TEST_F(KeldeskTest, BeginsWithASessionThatMayBeAFile) {
    const std::wstring path = script("; a log\n12.5 dbar\n");
    launch(L"");
    const HWND dialog = waitForWindow(L"#32770", L"Open Session");
    SendMessageW(GetDlgItem(dialog, IDC_SESSION_FILE), BM_CLICK, 0, 0);
    SendMessageW(inside(dialog, IDC_FILE_NAME), WM_SETTEXT, 0,
                 reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(waitUntil([&] { return !IsWindow(dialog); }));
    window_ = waitForWindow(L"KelDesk", L"KelDesk");
    expectShown(L"; a log\r\n12.5 dbar");
    PostMessageW(window_, WM_COMMAND, IDM_CONNECT_NETWORK, 0);
    answer(L"Connect", IDCANCEL);
    PostMessageW(window_, WM_COMMAND, IDM_CONNECT_SERIAL, 0);
    answer(L"Connect to serial port", IDCANCEL);
    PostMessageW(window_, WM_CLOSE, 0, 0);
    expectExit(0);
}

TEST_F(KeldeskTest, AsksBeforeItReplacesAReport) {
    const std::wstring path = script("kept");
    start();
    PostMessageW(window_, WM_COMMAND, IDM_COMPASS, 0);
    const HWND dialog = waitForWindow(L"#32770", L"Report of the calibration (Cancel: none)");
    SendMessageW(inside(dialog, cmb13), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(waitUntil([&] { return IsWindow(dialog) && !IsWindowEnabled(dialog); }));
}

}  // namespace
}  // namespace kel::test
