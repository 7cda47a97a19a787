#include "dialogs/service/replace_dialog.h"

#include "resources/resource_ids.h"

namespace kel::service {

ReplaceAnswer ReplaceDialog::ask(HWND owner) {
    return static_cast<ReplaceAnswer>(runModal(IDD_REPLACE_FILE, owner));
}

void ReplaceDialog::initialise() {
    setText(IDC_REPLACE_QUESTION, replaceQuestion(fileName_));
}

bool ReplaceDialog::command(int control, int) {
    switch (control) {
        case IDOK:
            answer(ReplaceAnswer::Yes);
            return true;
        case IDCANCEL:
            answer(ReplaceAnswer::No);
            return true;
        case IDC_REPLACE_ALL:
            answer(ReplaceAnswer::YesToAll);
            return true;
        default:
            return false;
    }
}

}  // namespace kel::service
