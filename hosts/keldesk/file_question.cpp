#include "hosts/keldesk/file_question.h"

#include <commdlg.h>

#include <iterator>

namespace kel::keldesk {
namespace {

DWORD flagsFor(FileUse use) {
    switch (use) {
        case FileUse::kRead:
            return OFN_FILEMUSTEXIST;
        case FileUse::kAppend:
            return OFN_PATHMUSTEXIST;
        case FileUse::kReplace:
            return OFN_PATHMUSTEXIST | OFN_OVERWRITEPROMPT;
    }
    return 0;
}

}  // namespace

std::wstring askForFile(HWND owner, const FileQuestion& asked) {
    wchar_t path[32768] = L"";
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    question.lpstrFilter = asked.filter;
    question.lpstrFile = path;
    question.nMaxFile = static_cast<DWORD>(std::size(path));
    question.lpstrTitle = asked.title;
    question.lpstrDefExt = asked.extension;
    question.Flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_EXPLORER | flagsFor(asked.use);
    const BOOL chosen =
        asked.use == FileUse::kRead ? GetOpenFileNameW(&question) : GetSaveFileNameW(&question);
    return chosen ? path : L"";
}

}  // namespace kel::keldesk
