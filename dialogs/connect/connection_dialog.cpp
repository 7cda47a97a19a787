#include "dialogs/connect/connection_dialog.h"

#include <algorithm>

#include "resources/resource_ids.h"
#include "settings/model/stored_list.h"

namespace kel::connect {
namespace {

constexpr UINT kRoom = 300;  // its terminator included

const struct {
    int control;
    std::wstring NetworkConnection::*text;
} kConnectionFields[] = {{IDC_CONNECTION_NAME, &NetworkConnection::name},
                         {IDC_CONNECTION_ADDRESS, &NetworkConnection::address},
                         {IDC_CONNECTION_PORT, &NetworkConnection::port}};

// What can be typed can be stored, in the user's code page.
UINT mostCharacters() {
    CPINFO codePage{};
    GetCPInfo(CP_ACP, &codePage);
    const UINT bytes = std::max<UINT>(1, codePage.MaxCharSize);
    return std::min<UINT>(kRoom - 1, (settings::kLongestText - 2) / bytes);
}

}  // namespace

std::optional<NetworkConnection> ConnectionDialog::ask(HWND owner) {
    if (runModal(IDD_CONNECTION, owner) != IDOK) return std::nullopt;
    return connection_;
}

void ConnectionDialog::initialise() {
    for (const auto& field : kConnectionFields) {
        SendMessageW(control(field.control), EM_LIMITTEXT, mostCharacters(), 0);
        setText(field.control, connection_.*field.text);
    }
}

bool ConnectionDialog::command(int control, int notification) {
    if (control == IDOK) {
        for (const auto& field : kConnectionFields)
            connection_.*field.text = text(field.control);
    }
    return Dialog::command(control, notification);
}

}  // namespace kel::connect
