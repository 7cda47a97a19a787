#include "dialogs/connect/open_file_page.h"

#include "com/handles.h"
#include "dialogs/connect/model/file_filter.h"
#include "resources/resource_ids.h"
#include "ui/file_chooser.h"

namespace kel::connect {
namespace {

constexpr WPARAM kLongestName = MAX_PATH - 1;

bool canBeRead(const std::wstring& path) {
    const com::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file);
}

}  // namespace

int OpenFilePage::statusLine() const {
    return IDC_FILE_STATUS;
}

void OpenFilePage::initialise() {
    const RememberedFiles files = loadFiles(values_.application, values_.usesWorkspace);
    SendMessageW(control(IDC_FILE_NAME), CB_LIMITTEXT, kLongestName, 0);
    for (const std::wstring& path : files.recent.paths())
        SendMessageW(control(IDC_FILE_NAME), CB_ADDSTRING, 0,
                     reinterpret_cast<LPARAM>(path.c_str()));
    CheckDlgButton(window(), IDC_FILE_WORKSPACES,
                   files.usesWorkspaces ? BST_CHECKED : BST_UNCHECKED);
    show(IDC_FILE_WORKSPACES, values_.offersWorkspaces);
}

bool OpenFilePage::command(int control, int notification) {
    if (control != IDC_FILE_BROWSE) return SessionPageOf::command(control, notification);
    browse();
    return true;
}

void OpenFilePage::browse() {
    const auto path =
        ui::chooseFile(GetParent(window()), chooserFilter(values_.fileFilter), L"txt");
    if (path && window()) setText(IDC_FILE_NAME, *path);
}

bool OpenFilePage::carryOut() {
    const std::wstring name = text(IDC_FILE_NAME);
    if (name.empty()) return false;
    if (!canBeRead(name)) {
        showStatus(L"Unable to open file: " + name);
        return false;
    }
    RememberedFiles files = loadFiles(values_.application, false);
    files.recent.add(name);
    files.usesWorkspaces = IsDlgButtonChecked(window(), IDC_FILE_WORKSPACES) == BST_CHECKED;
    values_.usesWorkspace = files.usesWorkspaces;
    saveFiles(values_.application, files);
    values_.fileName = name;
    return true;
}

}  // namespace kel::connect
