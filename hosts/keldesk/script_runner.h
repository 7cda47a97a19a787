#pragma once
// Running and checking scripts, and telling the user how it went.

#include <windows.h>

#include <functional>
#include <string>

#include "hosts/keldesk/instrument.h"
#include "hosts/keldesk/list_window.h"
#include "hosts/shared/script_file.h"

namespace kel::keldesk {

class ScriptRunner {
public:
    // `say` shows a short text. All must outlive the runner. Throws com::Error.
    ScriptRunner(Instrument& instrument, HWND owner,
                 std::function<void(const std::wstring& text)> say);

    // Checks a script first: one with errors runs only if the user says so. What is wrong, before
    // or after, is listed, and shown unless it is only warnings of a script that goes on to run.
    // Throw host::Failure (no such file), com::Error.
    void run(const std::wstring& path);
    void check(const std::wstring& path);

    // Shows the list of the last check or run.
    void showFindings() { findings_.show(); }

private:
    std::wstring runToEnd(const std::wstring& path, const host::ScriptFile& script);
    void list(const std::vector<host::Diagnostic>& found, const std::wstring& path,
              const host::ScriptFile& script);
    // The same, and opens the window where there is something.
    void show(const std::vector<host::Diagnostic>& found, const std::wstring& path,
              const host::ScriptFile& script);

    Instrument& instrument_;
    HWND owner_;
    std::function<void(const std::wstring&)> say_;
    ListWindow findings_;
};

}  // namespace kel::keldesk
