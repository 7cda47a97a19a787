#include "tests/wine/automation/script_host.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "com/error.h"
#include "com/handles.h"
#include "com/text.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

constexpr ULONGLONG kPatience = 40000;

// Cancels a window of the process once it is there, and gives it.
HWND cancel(DWORD process, const std::string& wanted) {
    const std::size_t colon = wanted.find(": ");
    const std::wstring caption = com::widen(wanted.substr(0, colon));
    const std::wstring text = com::widen(colon == wanted.npos ? "" : wanted.substr(colon + 2));
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, nullptr, caption.c_str()))) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner != process || !IsWindowVisible(window)) continue;
        const HWND child = FindWindowExW(window, nullptr, nullptr, text.c_str());
        if (text.empty() || IsWindowVisible(child)) break;
    }
    if (window) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    return window;
}

com::FileHandle open(const std::wstring& path, DWORD access) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return com::FileHandle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inherited, OPEN_ALWAYS, 0, nullptr));
}

}  // namespace

std::string runScriptHost(const std::string& script, const wchar_t* extension,
                          std::deque<std::string> windows) {
    const TemporaryFolder folder;
    const std::wstring file = folder.file(std::wstring(L"script") + extension, script);

    PROCESS_INFORMATION started{};
    {
        const com::FileHandle in = open(L"NUL", GENERIC_READ);
        const com::FileHandle out = open(folder.path() + L"\\output", GENERIC_WRITE);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = in.get();
        startup.hStdOutput = startup.hStdError = out.get();
        std::wstring command = L"cscript //nologo \"" + file + L"\"";
        if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                            &startup, &started))
            throw com::lastError();
    }
    const com::FileHandle process(started.hProcess), thread(started.hThread);
    HWND cancelled = nullptr;
    const ULONGLONG end = GetTickCount64() + kPatience;
    while (WaitForSingleObject(process.get(), 20) == WAIT_TIMEOUT) {
        // The next one may look like the one that is about to go.
        if (!windows.empty() && !IsWindow(cancelled)) {
            cancelled = cancel(started.dwProcessId, windows.front());
            if (cancelled) windows.pop_front();
        }
        if (GetTickCount64() < end) continue;
        ADD_FAILURE() << "the script does not end";
        TerminateProcess(process.get(), 1);
    }
    for (const std::string& window : windows)
        ADD_FAILURE() << "no window \"" << window << "\"";
    std::string text = folder.content(L"output");
    std::erase(text, '\r');
    return text;
}

}  // namespace kel::test
