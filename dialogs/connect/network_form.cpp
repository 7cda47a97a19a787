#include "dialogs/connect/network_form.h"

#include "dialogs/connect/connection_dialog.h"
#include "dialogs/connect/connection_store.h"
#include "resources/resource_ids.h"
#include "ui/redraw_pause.h"

namespace kel::connect {

int NetworkForm::statusLine() const {
    return IDC_NETWORK_STATUS;
}

void NetworkForm::initialise() {
    tree_ = control(IDC_NETWORK_LIST);
    // Windows makes the dialog one of narrow texts, and its tree would ask for tips in such.
    TreeView_SetUnicodeFormat(tree_, TRUE);
    list_ = ConnectionList(loadConnections());
    isLoaded_ = true;
    fillTree();
    intercept(tree_);
    link_.createStream();
}

void NetworkForm::fillTree() {
    const ui::RedrawPause pause(tree_);
    TreeView_DeleteAllItems(tree_);
    for (std::size_t index = 0; index < list_.all().size(); ++index)
        insert(index);
    select(TreeView_GetRoot(tree_));
}

HTREEITEM NetworkForm::insert(std::size_t index) {
    TVINSERTSTRUCTW entry{};
    entry.hInsertAfter = TVI_LAST;
    entry.item.mask = TVIF_TEXT | TVIF_PARAM;
    entry.item.pszText = const_cast<LPWSTR>(list_.all()[index].name.c_str());
    entry.item.lParam = static_cast<LPARAM>(index);
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&entry)));
}

void NetworkForm::select(HTREEITEM item) {
    if (item) TreeView_SelectItem(tree_, item);
}

std::size_t NetworkForm::indexOf(HTREEITEM item) const {
    TVITEMW asked{};
    asked.mask = TVIF_PARAM;
    asked.hItem = item;
    SendMessageW(tree_, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked));
    return static_cast<std::size_t>(asked.lParam);
}

std::optional<std::size_t> NetworkForm::selected() const {
    const HTREEITEM item = TreeView_GetSelection(tree_);
    if (!item) return std::nullopt;
    return indexOf(item);
}

bool NetworkForm::connect() {
    const auto index = selected();
    if (!index) return false;
    const NetworkConnection connection = list_.all()[*index];
    const std::wstring place = connection.address + L" : " + connection.port;
    if (!isConnected(connection)) {
        showStatus(L"Connecting to " + place + L" ...");
        if (!reach(connection, *index)) {
            showStatus(L"Failed to connect to " + place);
            return false;
        }
    }
    list_.use(*index);
    if (window()) fillTree();
    return true;
}

// Asks for passwords as long as the gateway wants one and the user gives one.
bool NetworkForm::reach(NetworkConnection connection, std::size_t index) {
    for (;;) {
        {
            const Busy busy(*this);
            if (link_.connect(connection)) return true;
            if (!link_.wantsPassword()) return false;
        }
        const auto given = askPassword(connection);
        if (!given || !window()) return false;
        connection.password = given->text;
        if (given->isKept) list_.setPassword(index, given->text);
    }
}

void NetworkForm::addConnection() {
    if (!selected()) return;
    const auto connection = ConnectionDialog(component(), {}).ask(window());
    if (!connection || !window()) return;
    list_.add(*connection);
    select(insert(list_.all().size() - 1));
}

void NetworkForm::editConnection() {
    const auto index = selected();
    if (!index) return;
    const auto connection = ConnectionDialog(component(), list_.all()[*index]).ask(window());
    if (!connection || !window()) return;
    list_.replace(*index, *connection);
    TVITEMW changed{};
    changed.mask = TVIF_TEXT;
    changed.hItem = TreeView_GetSelection(tree_);
    changed.pszText = const_cast<LPWSTR>(connection->name.c_str());
    SendMessageW(tree_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&changed));
}

void NetworkForm::removeConnection() {
    const HTREEITEM item = TreeView_GetSelection(tree_);
    if (!item) return;
    const std::size_t removed = indexOf(item);
    list_.remove(removed);
    for (HTREEITEM next = item; (next = TreeView_GetNextSibling(tree_, next)) != nullptr;) {
        TVITEMW changed{};
        changed.mask = TVIF_PARAM;
        changed.hItem = next;
        changed.lParam = static_cast<LPARAM>(indexOf(next) - 1);
        SendMessageW(tree_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&changed));
    }
    TreeView_DeleteItem(tree_, item);
    // The last one has made way for an offer.
    if (!TreeView_GetRoot(tree_)) fillTree();
}

bool NetworkForm::command(int control, int notification) {
    switch (control) {
        case IDC_NETWORK_NEW:
            addConnection();
            return true;
        case IDC_NETWORK_EDIT:
            editConnection();
            return true;
        case IDC_NETWORK_DELETE:
            removeConnection();
            return true;
        default:
            return Form::command(control, notification);
    }
}

std::optional<LRESULT> NetworkForm::notify(const NMHDR& notification) {
    if (notification.hwndFrom != tree_ || notification.code != TVN_GETINFOTIPW) return std::nullopt;
    const auto& tip = reinterpret_cast<const NMTVGETINFOTIPW&>(notification);
    const std::wstring text = list_.all().at(indexOf(tip.hItem)).description();
    if (tip.cchTextMax > 0) {
        const std::size_t length =
            text.copy(tip.pszText, static_cast<std::size_t>(tip.cchTextMax - 1));
        tip.pszText[length] = L'\0';
    }
    return 0;
}

// A double click on an item, not beside the last one, connects.
std::optional<LRESULT> NetworkForm::intercepted(HWND control, UINT message, WPARAM, LPARAM longer) {
    if (control != tree_ || message != WM_LBUTTONDBLCLK) return std::nullopt;
    TVHITTESTINFO hit{};
    hit.pt = {static_cast<short>(LOWORD(longer)), static_cast<short>(HIWORD(longer))};
    if (!TreeView_HitTest(tree_, &hit) || !(hit.flags & TVHT_ONITEM)) return std::nullopt;
    select(hit.hItem);
    confirm();
    return 0;
}

std::optional<LRESULT> NetworkForm::handle(UINT message, WPARAM, LPARAM) {
    if (message == WM_DESTROY && isLoaded_) saveConnections(list_.stored());
    return std::nullopt;
}

}  // namespace kel::connect
