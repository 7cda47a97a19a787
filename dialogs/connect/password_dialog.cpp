#include "dialogs/connect/password_dialog.h"

#include "resources/resource_ids.h"

namespace kel::connect {
namespace {

constexpr WPARAM kLongestPassword = 300;

}  // namespace

std::optional<GivenPassword> PasswordDialog::ask(HWND owner) {
    if (runModal(IDD_PASSWORD, owner) != IDOK) return std::nullopt;
    return given_;
}

void PasswordDialog::initialise() {
    SendMessageW(control(IDC_PASSWORD_TEXT), EM_LIMITTEXT, kLongestPassword, 0);
    setText(IDC_PASSWORD_TEXT, given_.text);
    SendMessageW(control(IDC_PASSWORD_TEXT), EM_SETSEL, 0, -1);
    CheckDlgButton(window(), IDC_PASSWORD_SAVE, given_.text.empty() ? BST_UNCHECKED : BST_CHECKED);
}

bool PasswordDialog::command(int control, int notification) {
    if (control == IDOK) {
        given_ = {.text = text(IDC_PASSWORD_TEXT),
                  .isKept = IsDlgButtonChecked(window(), IDC_PASSWORD_SAVE) == BST_CHECKED};
    }
    return Dialog::command(control, notification);
}

}  // namespace kel::connect
