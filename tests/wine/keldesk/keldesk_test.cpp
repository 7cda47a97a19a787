// keldesk as its user has it: the program itself, with the registered components, on the virtual
// instrument.
#include <gtest/gtest.h>
#include <winsock2.h>

#include <filesystem>
#include <fstream>

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
                                   nullptr, &startup, &started));
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

TEST_F(KeldeskTest, SendsWhatIsTyped) {
    start();
    ASSERT_NE(part(kCommandLine), nullptr);
    SendMessageW(part(kCommandLine), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"sernum"));
    PostMessageW(GetWindow(part(kCommandLine), GW_CHILD), WM_KEYDOWN, VK_RETURN, 0);
    expectShown(L"Serial Number: D123");
    PostMessageW(window_, WM_COMMAND, IDM_DISCONNECT, 0);
    waitForWindow(L"KelDesk", L"KelDesk");
    PostMessageW(window_, WM_CLOSE, 0, 0);
    expectExit(0);
}

TEST_F(KeldeskTest, StaysLiveWhileAScriptWaitsAndAsksBeforeItStopsIt) {
    start(script("sernum\n#WAIT_OK 20\n#WAIT 600\n"));
    expectShown(L"Serial Number: D123");
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
    start(script("@x=nosuch()\n"));
    waitForWindow(L"KelDeskList", L"Errors and warnings");
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

}  // namespace
}  // namespace kel::test
