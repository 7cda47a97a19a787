#include "hosts/keldesk/file_question.h"

#include <commdlg.h>

#include <iterator>

namespace kel::keldesk {

std::wstring askForFile(HWND owner, const wchar_t* title, const wchar_t* filter, bool isToSave) {
    wchar_t path[32768] = L"";
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    question.lpstrFilter = filter;
    question.lpstrFile = path;
    question.nMaxFile = static_cast<DWORD>(std::size(path));
    question.lpstrTitle = title;
    question.Flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_EXPLORER |
                     (isToSave ? OFN_PATHMUSTEXIST : OFN_FILEMUSTEXIST);
    const BOOL chosen = isToSave ? GetSaveFileNameW(&question) : GetOpenFileNameW(&question);
    return chosen ? path : L"";
}

}  // namespace kel::keldesk
