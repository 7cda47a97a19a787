#include "tests/wine/keldesk/program_prop.h"

#include <windows.h>

#include <commctrl.h>

#include <stdexcept>

#include "com/handles.h"
#include "com/text.h"
#include "tests/support/cases.h"
#include "tests/support/project_file.h"

namespace kel::test {
namespace {

constexpr DWORD kProgramTime = 20000;
constexpr wchar_t kSettings[] = L"Software\\KelDesk";

std::wstring clipboardText() {
    if (!OpenClipboard(nullptr)) return {};
    const HANDLE data = GetClipboardData(CF_UNICODETEXT);
    const auto* text = data ? static_cast<const wchar_t*>(GlobalLock(data)) : nullptr;
    const std::wstring copied = text ? text : L"";
    if (text) GlobalUnlock(data);
    CloseClipboard();
    return copied;
}

// The user's own keys are not those of the stage.
com::RegistryKeyHandle userKey() {
    HKEY user = nullptr;
    RegOpenCurrentUser(KEY_ALL_ACCESS, &user);
    return com::RegistryKeyHandle(user);
}

std::wstring firstRecent() {
    wchar_t paths[4096] = L"";
    DWORD size = sizeof paths;
    RegGetValueW(userKey().get(), kSettings, L"RecentScripts", RRF_RT_REG_MULTI_SZ, nullptr, paths,
                 &size);
    return paths;
}

LRESULT findings() {
    const HWND window = FindWindowW(L"KelDeskList", L"Errors and warnings");
    return SendMessageW(GetWindow(window, GW_CHILD), LVM_GETITEMCOUNT, 0, 0);
}

class ProgramProp final : public Prop {
public:
    explicit ProgramProp(Stage& stage) : stage_(stage) {
        // What a scene that failed, or the user, has made of the terminal would be in the way.
        RegDeleteKeyValueW(userKey().get(), kSettings, L"Terminal");
    }
    ~ProgramProp() override {
        if (!process_) return;
        TerminateProcess(process_.get(), 1);
        WaitForSingleObject(process_.get(), kProgramTime);
    }

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string word = takeWord(rest);
        const std::wstring text = widened(rest);
        if (word == "in") {
            folder_ = text;
        } else if (word == "start") {
            start(text);
        } else if (word == "status") {
            waitUntil(line, [&] { return status(1).starts_with(text); });
        } else if (word == "says") {
            waitUntil(line, [&] { return status(2).starts_with(text); });
        } else if (word == "found") {
            waitUntil(line, [&] { return findings() == std::stol(rest); });
        } else if (word == "asks") {
            waitUntil(line, [&] { return !EnumThreadWindows(stage_.programThread, goesOn, 0); });
        } else if (word == "recent") {
            waitUntil(line, [&] { return firstRecent() == text; });
        } else if (word == "copied") {
            waitUntil(line, [&] { return clipboardText().find(text) != std::wstring::npos; });
        } else if (word == "logs") {
            EnumThreadWindows(stage_.programThread, logOff, 0);
            TerminateProcess(process_.get(), 0);
        } else if (word == "runs") {
            if (WaitForSingleObject(process_.get(), 0) != WAIT_TIMEOUT)
                throw std::runtime_error("it has ended");
        } else if (word == "ends") {
            DWORD code = STILL_ACTIVE;
            waitUntil(line,
                      [&] { return WaitForSingleObject(process_.get(), 0) == WAIT_OBJECT_0; });
            GetExitCodeProcess(process_.get(), &code);
            stage_.transcript.tell("ended with " + std::to_string(code));
        } else {
            throw std::invalid_argument("not understood: " + line);
        }
    }

private:
    void start(const std::wstring& arguments) {
        std::wstring line =
            L"\"" + projectFile("hosts/keldesk/keldesk.exe").wstring() + L"\" " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        com::check(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                  folder_.empty() ? nullptr : folder_.c_str(), &startup, &started)
                       ? S_OK
                       : HRESULT_FROM_WIN32(GetLastError()));
        CloseHandle(started.hThread);
        process_ = com::FileHandle(started.hProcess);
        stage_.programThread = started.dwThreadId;
    }

    static void waitUntil(const std::string& what, const std::function<bool()>& holds) {
        for (const DWORD begin = GetTickCount(); !holds(); Sleep(10))
            if (GetTickCount() - begin > kProgramTime)
                throw std::runtime_error("waited in vain: " + what);
    }

    static BOOL CALLBACK goesOn(HWND window, LPARAM) { return !GetDlgItem(window, IDNO); }
    static BOOL CALLBACK findBar(HWND window, LPARAM place) {
        HWND& bar = *reinterpret_cast<HWND*>(place);
        bar = FindWindowExW(window, nullptr, STATUSCLASSNAMEW, nullptr);
        return !bar;
    }
    static BOOL CALLBACK logOff(HWND window, LPARAM) {
        SendMessageW(window, WM_ENDSESSION, SendMessageW(window, WM_QUERYENDSESSION, 0, 0), 0);
        return TRUE;
    }
    // The bar writes it into the memory of its own process.
    std::wstring status(WPARAM part) const {
        HWND bar = nullptr;
        EnumThreadWindows(stage_.programThread, findBar, reinterpret_cast<LPARAM>(&bar));
        wchar_t text[128] = L"";
        void* const there =
            VirtualAllocEx(process_.get(), nullptr, sizeof text, MEM_COMMIT, PAGE_READWRITE);
        SendMessageW(bar, SB_GETTEXTW, part, reinterpret_cast<LPARAM>(there));
        ReadProcessMemory(process_.get(), there, text, sizeof text - sizeof *text, nullptr);
        VirtualFreeEx(process_.get(), there, 0, MEM_RELEASE);
        return text;
    }

    Stage& stage_;
    std::wstring folder_;
    com::FileHandle process_;
};

}  // namespace

std::unique_ptr<Prop> makeProgramProp(Stage& stage) {
    return std::make_unique<ProgramProp>(stage);
}

}  // namespace kel::test
