// keldesk: a terminal and scripts for an instrument, in a window.
#include <windows.h>

#include <shellapi.h>

#include <exception>
#include <string>
#include <vector>

#include "com/text.h"
#include "hosts/keldesk/main_window.h"
#include "hosts/shared/activation_context.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/library_search.h"
#include "hosts/shared/model/failure.h"

namespace {

using namespace kel;

std::vector<std::string> programArguments() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int i = 1; arguments && i < count; ++i)
        texts.push_back(com::narrow(arguments[i], CP_UTF8));
    LocalFree(arguments);
    return texts;
}

int fail(host::ExitCode code, const std::string& text) {
    MessageBoxW(nullptr, com::widen(text, CP_UTF8).c_str(), L"KelDesk", MB_OK | MB_ICONERROR);
    return static_cast<int>(code);
}

int runDesk() {
    try {
        const keldesk::DeskOptions options = keldesk::parseDeskOptions(programArguments());
        const auto manifest = host::manifestBesideProgram();
        keldesk::MainWindow(options).run(options);
        return 0;
    } catch (const host::Failure& failure) {
        return fail(failure.code(), failure.what());
    } catch (const com::Error& error) {
        return fail(host::ExitCode::kFailed, host::describe(error));
    } catch (const std::exception& error) {
        return fail(host::ExitCode::kFailed, error.what());
    }
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    host::leaveOutCurrentFolder();
    // The control is dropped into the window by services that need more than COM.
    if (FAILED(OleInitialize(nullptr))) return 70;
    const int code = runDesk();
    OleUninitialize();
    return code;
}
