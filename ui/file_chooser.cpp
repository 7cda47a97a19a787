#include "ui/file_chooser.h"

#include <cderr.h>
#include <commdlg.h>

#include "com/error.h"

namespace kel::ui {
namespace {

constexpr DWORD kLongestPath = 32768;

}  // namespace

std::optional<std::wstring> chooseFile(HWND owner, const std::wstring& filter,
                                       const wchar_t* defaultExtension, const std::wstring& first) {
    std::wstring path = first.substr(0, kLongestPath - 1);
    path.resize(kLongestPath);
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    question.lpstrFilter = filter.c_str();
    question.lpstrFile = path.data();
    question.nMaxFile = kLongestPath;
    question.lpstrDefExt = defaultExtension;
    question.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!GetOpenFileNameW(&question)) {
        const DWORD error = CommDlgExtendedError();
        if (error == 0) return std::nullopt;
        if (error == FNERR_INVALIDFILENAME && !first.empty())
            return chooseFile(owner, filter, defaultExtension);
        throw com::Error(
            E_FAIL, L"The file chooser cannot be shown (error " + std::to_wstring(error) + L")");
    }
    path.resize(wcslen(path.c_str()));
    return path;
}

}  // namespace kel::ui
