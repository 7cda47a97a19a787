#pragma once
// A user for the dialogs of a test.

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kel::test {

std::wstring classOf(HWND window);
// The text of a window as the platform keeps it, without asking its thread.
std::wstring captionOf(HWND window);

// The control of a window, or of a page inside it: of the one that is seen where several have it.
HWND controlIn(HWND window, int identifier);

// Works on a thread of its own through a sequence of steps, while the test's thread runs the
// dialog:
//
//     DialogDriver user([](DialogDriver& driver) {
//         driver.waitFor(L"Select options");
//         driver.press(IDOK);
//     });
//     dialog->ShowModal(0, &result);
//
// A step that does not succeed in time is a failure of the test that tells all windows and the
// focus, takes a picture beside the program, and cancels every dialog until the test's thread is
// through, so that the test ends.
class DialogDriver {
public:
    explicit DialogDriver(std::function<void(DialogDriver&)> steps);
    // Waits for the last step.
    ~DialogDriver();
    DialogDriver(const DialogDriver&) = delete;
    DialogDriver& operator=(const DialogDriver&) = delete;

    // Runs the message loop of the test's thread until the last step, for what is not modal.
    void runMessageLoop();

    // The following steps are for the windows of another thread, of another program even.
    void moveTo(DWORD thread) { testThread_ = thread; }

    // Waits for a window with this caption that takes input. The following steps are for it.
    HWND waitFor(const std::wstring& caption);
    // Whether there is one.
    bool isThere(const std::wstring& caption) const { return find(caption) != nullptr; }
    // The dialogs that take input now.
    std::vector<HWND> dialogs() const;
    // Cancels all dialogs; a question that cannot be cancelled is agreed to.
    void leave() const;
    // Waits until something holds.
    void waitUntil(const char* what, const std::function<bool()>& holds);

    HWND window() const { return window_; }
    // Of the window, or of a page inside it: of the one that is seen where several have it.
    HWND control(int identifier);
    std::wstring text(int identifier) { return textOf(control(identifier)); }

    // Presses a button without waiting for what it does.
    void press(int identifier);
    void setText(int identifier, const std::wstring& text);
    // Presses a key, for the window that has the focus; `modifier` is held down meanwhile.
    void key(WORD virtualKey, WORD modifier = 0);
    void type(std::wstring_view text);
    // The window of the test's thread that has the focus.
    HWND focus();
    // Waits for the answer, for as long as a window that works may take.
    static LRESULT send(HWND window, UINT message, WPARAM wide = 0, LPARAM longer = 0);
    static std::wstring textOf(HWND window);

private:
    HWND find(const std::wstring& caption) const;
    void run(const std::function<void(DialogDriver&)>& steps);
    void giveUp(const std::string& reason);

    DWORD testThread_;
    std::atomic<bool> hasEnded_ = false;
    std::atomic<bool> isOver_ = false;
    HWND window_ = nullptr;
    std::thread thread_;
};

}  // namespace kel::test
