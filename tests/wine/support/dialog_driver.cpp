#include "tests/wine/support/dialog_driver.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <stdexcept>

#include "com/message_loop.h"
#include "com/text.h"
#include "tests/wine/support/picture.h"

namespace kel::test {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr UINT kAnswerTime = 10000;

BOOL CALLBACK collect(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

std::vector<HWND> windowsOf(DWORD thread) {
    std::vector<HWND> windows;
    EnumThreadWindows(thread, collect, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

bool takesInput(HWND window) {
    return IsWindowVisible(window) && IsWindowEnabled(window);
}

bool isDialog(HWND window) {
    return takesInput(window) && classOf(window) == L"#32770";
}

void describe(std::ostream& stream, HWND window, const char* indent) {
    stream << indent << window << ' ' << com::narrow(classOf(window)) << " '"
           << com::narrow(captionOf(window)) << "' id " << GetDlgCtrlID(window)
           << (IsWindowVisible(window) ? " visible" : "")
           << (IsWindowEnabled(window) ? " enabled" : "") << '\n';
}

}  // namespace

std::wstring classOf(HWND window) {
    wchar_t name[64] = L"";
    GetClassNameW(window, name, static_cast<int>(std::size(name)));
    return name;
}

std::wstring captionOf(HWND window) {
    wchar_t text[256] = L"";
    InternalGetWindowText(window, text, static_cast<int>(std::size(text)));
    return text;
}

HWND controlIn(HWND window, int identifier) {
    HWND found = GetDlgItem(window, identifier);
    for (const wchar_t* kind : {L"#32770", L"AtlAxWin"}) {
        for (HWND page = nullptr; (page = FindWindowExW(window, page, kind, nullptr));) {
            const HWND inside = controlIn(page, identifier);
            if (inside && (!found || IsWindowVisible(inside))) found = inside;
        }
    }
    return found;
}

DialogDriver::DialogDriver(std::function<void(DialogDriver&)> steps)
    : testThread_(GetCurrentThreadId()),
      thread_([this, steps = std::move(steps)] { run(steps); }) {}

DialogDriver::~DialogDriver() {
    isOver_ = true;
    thread_.join();
}

void DialogDriver::run(const std::function<void(DialogDriver&)>& steps) {
    try {
        steps(*this);
        hasEnded_ = true;
    } catch (const std::exception& failure) {
        giveUp(failure.what());
    }
}

void DialogDriver::giveUp(const std::string& reason) {
    std::ostringstream report;
    report << reason << "; focus " << focus() << "; windows:\n";
    const auto path = L"failed-" + std::to_wstring(GetCurrentProcessId()) + L".png";
    for (const HWND window : windowsOf(testThread_)) {
        describe(report, window, "  ");
        for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
            describe(report, child, "    ");
        if (!isDialog(window)) continue;
        try {
            savePicture(window, path);
            report << "  (picture: " << com::narrow(path) << ")\n";
        } catch (const std::exception& failure) {
            report << "  (" << failure.what() << ")\n";
        }
    }
    ADD_FAILURE() << report.str();
    hasEnded_ = true;
    for (; !isOver_; Sleep(20)) {
        for (const HWND window : dialogs())
            PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    }
}

void DialogDriver::runMessageLoop() {
    while (!hasEnded_) {
        com::sleepUntilMessage(std::chrono::milliseconds(10));
        com::runWaitingMessages();
    }
    com::runWaitingMessages();
}

std::vector<HWND> DialogDriver::dialogs() const {
    std::vector<HWND> windows = windowsOf(testThread_);
    std::erase_if(windows, [](HWND window) { return !isDialog(window); });
    return windows;
}

void DialogDriver::leave() const {
    for (const HWND window : dialogs()) {
        const bool isQuestion = GetDlgItem(window, IDYES) && !GetDlgItem(window, IDCANCEL);
        PostMessageW(window, WM_COMMAND, isQuestion ? IDYES : IDCANCEL, 0);
    }
}

void DialogDriver::waitUntil(const char* what, const std::function<bool()>& holds) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error(std::string("waited in vain: ") + what);
        Sleep(2);
    }
}

HWND DialogDriver::find(const std::wstring& caption) const {
    HWND found = nullptr;
    for (const HWND window : windowsOf(testThread_))
        if (takesInput(window) && captionOf(window) == caption) found = window;
    return found;
}

HWND DialogDriver::waitFor(const std::wstring& caption) {
    window_ = nullptr;
    waitUntil(("for '" + com::narrow(caption) + "'").c_str(),
              [&] { return (window_ = find(caption)) != nullptr; });
    // It takes input when its loop has come round.
    send(window_, WM_NULL);
    return window_;
}

HWND DialogDriver::control(int identifier) {
    const HWND found = controlIn(window_, identifier);
    if (!found) throw std::runtime_error("there is no control " + std::to_string(identifier));
    return found;
}

std::wstring DialogDriver::textOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(send(window, WM_GETTEXTLENGTH)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        send(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

void DialogDriver::press(int identifier) {
    // Posted, never sent: what it does may run a dialog of its own.
    PostMessageW(control(identifier), BM_CLICK, 0, 0);
}

void DialogDriver::setText(int identifier, const std::wstring& text) {
    send(control(identifier), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void DialogDriver::key(WORD virtualKey, WORD modifier) {
    std::vector<INPUT> inputs;
    const auto add = [&](WORD code, DWORD flags) {
        if (code == 0) return;
        INPUT& input = inputs.emplace_back();
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = code;
        input.ki.dwFlags = flags;
    };
    add(modifier, 0);
    add(virtualKey, 0);
    add(virtualKey, KEYEVENTF_KEYUP);
    add(modifier, KEYEVENTF_KEYUP);
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

void DialogDriver::type(std::wstring_view text) {
    const HWND target = focus();
    for (const wchar_t character : text)
        send(target, WM_CHAR, character);
}

HWND DialogDriver::focus() {
    GUITHREADINFO information{};
    information.cbSize = sizeof information;
    GetGUIThreadInfo(testThread_, &information);
    return information.hwndFocus;
}

LRESULT DialogDriver::send(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(window, message, wide, longer, SMTO_NORMAL, kAnswerTime, &result))
        throw std::runtime_error("a window does not answer");
    return static_cast<LRESULT>(result);
}

}  // namespace kel::test
