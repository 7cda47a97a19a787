#pragma once
// Which file the user means.

#include <windows.h>

#include <string>

namespace kel::keldesk {

enum class FileUse { kRead, kAppend, kReplace };

struct FileQuestion {
    const wchar_t* title;
    const wchar_t* filter;  // pairs of texts that end with a null character each, and another one
    const wchar_t* extension;  // of a name that is typed without one
    FileUse use;
};

inline constexpr wchar_t kScripts[] = L"Scripts (*.kel)\0*.kel\0All files (*.*)\0*.*\0";
inline constexpr FileQuestion kScriptToRun = {L"Run script", kScripts, L"kel", FileUse::kRead};
inline constexpr FileQuestion kScriptToCheck = {L"Check script", kScripts, L"kel", FileUse::kRead};
inline constexpr FileQuestion kLog = {
    L"Log to file", L"Log files (*.log)\0*.log\0All files (*.*)\0*.*\0", L"log", FileUse::kAppend};
inline constexpr FileQuestion kReport = {L"Report of the calibration (Cancel: none)",
                                         L"Reports (*.html)\0*.html\0All files (*.*)\0*.*\0",
                                         L"html", FileUse::kReplace};

// A path that the user has chosen; empty when he has not. A file that will be replaced is asked
// about.
std::wstring askForFile(HWND owner, const FileQuestion& asked);

}  // namespace kel::keldesk
