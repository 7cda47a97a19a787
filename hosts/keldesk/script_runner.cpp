#include "hosts/keldesk/script_runner.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "hosts/keldesk/wide.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/finding_writer.h"

namespace kel::keldesk {
namespace {

std::wstring numberOrNothing(std::size_t number) {
    return number > 0 ? std::to_wstring(number) : std::wstring();
}

std::size_t errorsAmong(const std::vector<host::Diagnostic>& found) {
    return static_cast<std::size_t>(std::ranges::count(found, true, &host::Diagnostic::isError));
}

std::wstring counted(std::size_t count, const wchar_t* one, const wchar_t* more) {
    return std::to_wstring(count) + L" " + (count == 1 ? one : more);
}

std::wstring seconds(std::chrono::steady_clock::duration time) {
    wchar_t text[32];
    std::swprintf(text, std::size(text), L"%.1f s", std::chrono::duration<double>(time).count());
    return text;
}

}  // namespace

ScriptRunner::ScriptRunner(Instrument& instrument, HWND owner,
                           std::function<void(const std::wstring&)> say)
    : instrument_(instrument),
      owner_(owner),
      say_(std::move(say)),
      findings_(
          owner, L"Errors and warnings",
          {{L"Line", 50}, {L"Column", 60}, {L"Kind", 70}, {L"Message", 470}, {L"Script", 160}}) {}

void ScriptRunner::list(const std::vector<host::Diagnostic>& found, const std::wstring& path,
                        const host::ScriptFile& script) {
    const std::string name = com::narrow(path, CP_UTF8);
    host::FindingWriter writer(script, name, name);
    std::vector<ListWindow::Row> rows;
    for (const host::Diagnostic& one : found) {
        rows.push_back({numberOrNothing(one.line), numberOrNothing(one.column),
                        one.isError ? L"Error" : L"Warning", wide(writer.message(one)),
                        wide(one.file)});
    }
    findings_.setRows(rows);
}

void ScriptRunner::show(const std::vector<host::Diagnostic>& found, const std::wstring& path,
                        const host::ScriptFile& script) {
    list(found, path, script);
    if (!found.empty()) findings_.show();
}

void ScriptRunner::check(const std::wstring& path) {
    const host::ScriptFile script = host::readScript(com::narrow(path, CP_UTF8));
    const auto found = instrument_.check(path, script.text);
    show(found, path, script);
    const std::size_t errors = errorsAmong(found);
    say_(wide(script.name) + L": " + counted(errors, L"error", L"errors") + L", " +
         counted(found.size() - errors, L"warning", L"warnings"));
}

void ScriptRunner::run(const std::wstring& path) {
    const host::ScriptFile script = host::readScript(com::narrow(path, CP_UTF8));
    const std::wstring name = wide(script.name);
    const auto found = instrument_.check(path, script.text);
    list(found, path, script);
    if (const std::size_t errors = errorsAmong(found)) {
        findings_.show();
        const std::wstring question =
            name + L" has " + counted(errors, L"error", L"errors") + L". Run it in spite of that?";
        if (MessageBoxW(owner_, question.c_str(), L"KelDesk",
                        MB_YESNO | MB_DEFBUTTON2 | MB_ICONWARNING) != IDYES) {
            findings_.show();  // the question was before it
            return say_(name + L" was not started");
        }
    }
    say_(runToEnd(path, script));
}

std::wstring ScriptRunner::runToEnd(const std::wstring& path, const host::ScriptFile& script) {
    const std::wstring name = wide(script.name);
    const auto begin = std::chrono::steady_clock::now();
    std::string reason;
    try {
        if (instrument_.run(path, script.folder, script.text))
            return name + L" ran to its end (" + seconds(std::chrono::steady_clock::now() - begin) +
                   L")";
    } catch (const com::Error& error) {
        reason = host::describe(error);
    }
    if (instrument_.wasCancelled())
        return name + L" was cancelled after " + seconds(std::chrono::steady_clock::now() - begin);
    auto wrong = instrument_.lastRun();
    if (!reason.empty()) wrong.push_back({com::narrow(path, CP_UTF8), 0, 0, true, reason});
    show(wrong, path, script);
    return name + L" stopped on an error";
}

}  // namespace kel::keldesk
