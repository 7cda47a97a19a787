#include "hosts/keldesk/list_window.h"

#include <commctrl.h>

#include "com/error.h"
#include "hosts/keldesk/scaled.h"

namespace kel::keldesk {
namespace {

constexpr wchar_t kListClass[] = L"KelDeskList";
constexpr int kMargin = 40;  // beside the columns: frame and scroll bar
constexpr int kListHeight = 260;

LPWSTR changeable(const std::wstring& text) {
    return const_cast<LPWSTR>(text.c_str());
}

}  // namespace

ListWindow::ListWindow(HWND owner, const wchar_t* title, const std::vector<Column>& columns) {
    WNDCLASSW description{};
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    description.lpszClassName = kListClass;
    RegisterClassW(&description);

    int width = kMargin;
    for (const Column& column : columns)
        width += column.width;
    const SIZE size = scaledToFit(width, kListHeight);
    RECT beside{};
    GetWindowRect(owner, &beside);
    const POINT place = inWorkArea({beside.left + scaled(60), beside.top + scaled(90)}, size);
    window_ =
        CreateWindowExW(WS_EX_TOOLWINDOW, kListClass, title, WS_OVERLAPPEDWINDOW, place.x, place.y,
                        size.cx, size.cy, owner, nullptr, description.hInstance, nullptr);
    if (!window_) throw com::lastError();
    list_ = CreateWindowExW(0, WC_LISTVIEWW, title,
                            WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_NOSORTHEADER |
                                LVS_SHOWSELALWAYS | LVS_SINGLESEL,
                            0, 0, 0, 0, window_, nullptr, description.hInstance, nullptr);
    if (!list_) throw com::lastError();
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(list_));
    ListView_SetExtendedListViewStyle(list_, LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES);
    int index = 0;
    for (const Column& column : columns) {
        LVCOLUMNW header{};
        header.mask = LVCF_TEXT | LVCF_WIDTH;
        header.pszText = const_cast<LPWSTR>(column.title);
        header.cx = scaled(column.width);
        SendMessageW(list_, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index++),
                     reinterpret_cast<LPARAM>(&header));
    }
    RECT client{};
    GetClientRect(window_, &client);
    MoveWindow(list_, 0, 0, static_cast<int>(client.right), static_cast<int>(client.bottom), TRUE);
}

ListWindow::~ListWindow() {
    DestroyWindow(window_);
}

LRESULT CALLBACK ListWindow::procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    const HWND list = reinterpret_cast<HWND>(GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (message) {
        case WM_SIZE:
            MoveWindow(list, 0, 0, LOWORD(longer), HIWORD(longer), TRUE);
            return 0;
        case WM_SETFOCUS:
            SetFocus(list);
            return 0;
        case WM_NOTIFY: {
            const auto& key = *reinterpret_cast<const NMLVKEYDOWN*>(longer);
            if (key.hdr.code == LVN_KEYDOWN && key.wVKey == VK_ESCAPE) ShowWindow(window, SW_HIDE);
            return 0;
        }
        case WM_CLOSE:
            ShowWindow(window, SW_HIDE);
            return 0;
        default:
            return DefWindowProcW(window, message, wide, longer);
    }
}

void ListWindow::insert(int index, const Row& row) {
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = index;
    for (const std::wstring& text : row) {
        item.pszText = changeable(text);
        const bool isFirst = item.iSubItem == 0;
        const bool isThere = index < ListView_GetItemCount(list_);
        SendMessageW(list_, isFirst && !isThere ? LVM_INSERTITEMW : LVM_SETITEMW, 0,
                     reinterpret_cast<LPARAM>(&item));
        ++item.iSubItem;
    }
}

void ListWindow::setRows(const std::vector<Row>& rows) {
    SendMessageW(list_, WM_SETREDRAW, FALSE, 0);
    ListView_DeleteAllItems(list_);
    int index = 0;
    for (const Row& row : rows)
        insert(index++, row);
    // The keys begin somewhere, and a screen reader has something to read.
    ListView_SetItemState(list_, 0, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
    SendMessageW(list_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(list_, nullptr, TRUE);
}

void ListWindow::setRow(const Row& row) {
    LVFINDINFOW wanted{};
    wanted.flags = LVFI_STRING;
    wanted.psz = row.front().c_str();
    const auto found = static_cast<int>(SendMessageW(list_, LVM_FINDITEMW, static_cast<WPARAM>(-1),
                                                     reinterpret_cast<LPARAM>(&wanted)));
    insert(found >= 0 ? found : ListView_GetItemCount(list_), row);
}

void ListWindow::show() {
    ShowWindow(window_, SW_SHOW);
    SetForegroundWindow(window_);
}

}  // namespace kel::keldesk
