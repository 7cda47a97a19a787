#include "terminal/search_bar.h"

#include <algorithm>

#include "resources/resource_ids.h"

namespace kel::terminal {
namespace {

constexpr short kWidth = 300;
constexpr short kHeight = 17;
constexpr short kLeastWanted = 40;  // of the field's width

ui::DialogTemplate description() {
    constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;
    constexpr DWORD kButton = kChild | WS_TABSTOP;
    ui::DialogTemplate bar(L"Find", kWidth, kHeight, WS_CHILD | DS_CONTROL, WS_EX_CONTROLPARENT);
    bar.add({L"STATIC", L"F&ind:", kChild | SS_LEFT, 0, {3, 4, 20, 9}, IDC_SEARCH_PROMPT});
    bar.add({L"EDIT",
             L"",
             kButton | WS_BORDER | ES_AUTOHSCROLL,
             0,
             {24, 2, 60, 12},
             IDC_SEARCH_WANTED});
    bar.add({L"STATIC", L"", kChild | SS_LEFT | SS_NOPREFIX, 0, {88, 4, 50, 9}, IDC_SEARCH_COUNT});
    bar.add({L"BUTTON", L"&Next", kButton | BS_PUSHBUTTON, 0, {140, 2, 30, 13}, IDC_SEARCH_NEXT});
    bar.add({L"BUTTON",
             L"&Previous",
             kButton | BS_PUSHBUTTON,
             0,
             {172, 2, 38, 13},
             IDC_SEARCH_PREVIOUS});
    bar.add({L"BUTTON",
             L"Match &case",
             kButton | BS_AUTOCHECKBOX,
             0,
             {213, 3, 54, 11},
             IDC_SEARCH_CASE});
    bar.add({L"BUTTON", L"C&lose", kButton | BS_PUSHBUTTON, 0, {268, 2, 29, 13}, IDCANCEL});
    return bar;
}

bool isKeyOfBar(const MSG& message) {
    if (message.message != WM_KEYDOWN) return false;
    return message.wParam == VK_RETURN || message.wParam == VK_ESCAPE || message.wParam == VK_F3;
}

bool isShiftDown() {
    return GetKeyState(VK_SHIFT) < 0;
}

}  // namespace

void SearchBar::create(HWND parent) {
    Dialog::create(description(), parent);
}

void SearchBar::initialise() {
    RECT client{};
    GetClientRect(window(), &client);
    width_ = static_cast<int>(client.right);
    height_ = static_cast<int>(client.bottom);
    wantedPlace_ = placeOf(IDC_SEARCH_WANTED);
    for (const int identifier :
         {IDC_SEARCH_COUNT, IDC_SEARCH_NEXT, IDC_SEARCH_PREVIOUS, IDC_SEARCH_CASE, IDCANCEL}) {
        otherPlaces_.emplace_back(identifier, placeOf(identifier));
        intercept(control(identifier));
    }
    intercept(control(IDC_SEARCH_WANTED));
}

void SearchBar::open() {
    const OutputPane::Selection selected = pane_.selection();
    if (selected.begin < selected.end) {
        const std::wstring text =
            pane_.text().substr(selected.begin, selected.end - selected.begin);
        if (text.find_first_of(L"\r\n") == std::wstring::npos) setText(IDC_SEARCH_WANTED, text);
    }
    if (!isOpen_) {
        isOpen_ = true;
        onLayout();
        ShowWindow(window(), SW_SHOW);
    }
    SetFocus(control(IDC_SEARCH_WANTED));
    SendMessageW(control(IDC_SEARCH_WANTED), EM_SETSEL, 0, -1);
}

void SearchBar::close() {
    if (!isOpen_) return;
    isOpen_ = false;
    // The focus first, lest the platform gives it to somebody else.
    onClosed();
    ShowWindow(window(), SW_HIDE);
    onLayout();
}

void SearchBar::setPlace(const ui::Rectangle& place) {
    SetWindowPos(window(), nullptr, place.left, place.top, place.width(), place.height(),
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

// The field takes what the other controls leave.
void SearchBar::arrange() {
    RECT client{};
    GetClientRect(window(), &client);
    RECT least{0, 0, kLeastWanted, 0};
    MapDialogRect(window(), &least);
    const int more = std::max(static_cast<int>(client.right) - width_,
                              static_cast<int>(least.right) - wantedPlace_.width());
    ui::Rectangle wanted = wantedPlace_;
    wanted.right += more;
    setPlaceOf(IDC_SEARCH_WANTED, wanted);
    for (auto [identifier, place] : otherPlaces_) {
        place.left += more;
        place.right += more;
        setPlaceOf(identifier, place);
    }
    RedrawWindow(window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

std::optional<LRESULT> SearchBar::handle(UINT message, WPARAM, LPARAM) {
    if (message != WM_SIZE) return std::nullopt;
    arrange();
    return 0;
}

bool SearchBar::command(int control, int notification) {
    switch (control) {
        case IDC_SEARCH_NEXT:
            findNext();
            break;
        case IDC_SEARCH_PREVIOUS:
            findPrevious();
            break;
        case IDC_SEARCH_CASE:
            findWhileTyping();
            break;
        case IDC_SEARCH_WANTED:
            if (notification == EN_CHANGE) findWhileTyping();
            break;
        case IDCANCEL:
            close();
            break;
    }
    return true;
}

void SearchBar::showFailure(const std::wstring& text) {
    setText(IDC_SEARCH_COUNT, text);
}

std::optional<LRESULT> SearchBar::intercepted(HWND control, UINT message, WPARAM wide,
                                              LPARAM longer) {
    switch (message) {
        case WM_GETDLGCODE: {
            const auto* asked = reinterpret_cast<const MSG*>(longer);
            if (!asked || !isKeyOfBar(*asked)) return std::nullopt;
            return DLGC_WANTMESSAGE;
        }
        case WM_KEYDOWN:
            if (key(control, wide)) return 0;
            return std::nullopt;
        case WM_CHAR:
            // The keys themselves have been handled; these would only beep.
            if (wide == L'\r' || wide == L'\t' || wide == L'\x1B') return 0;
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

bool SearchBar::key(HWND control, WPARAM key) {
    const bool isButton = control != this->control(IDC_SEARCH_WANTED);
    switch (key) {
        case VK_ESCAPE:
            close();
            return true;
        case VK_RETURN:
            if (isButton) {
                SendMessageW(control, BM_CLICK, 0, 0);
                return true;
            }
            [[fallthrough]];
        case VK_F3:
            isShiftDown() ? findPrevious() : findNext();
            return true;
        case VK_TAB:
            // Comes here in a message loop that knows no dialogs.
            moveFocus();
            return true;
        default:
            return false;
    }
}

void SearchBar::moveFocus() {
    SetFocus(GetNextDlgTabItem(window(), GetFocus(), isShiftDown()));
}

TextSearch SearchBar::searchIn(const std::wstring& output) const {
    return TextSearch(output, text(IDC_SEARCH_WANTED),
                      IsDlgButtonChecked(window(), IDC_SEARCH_CASE) == BST_CHECKED);
}

void SearchBar::findNext() {
    const std::wstring output = pane_.text();
    const TextSearch search = searchIn(output);
    show(output, search, search.next(pane_.selection().end));
}

void SearchBar::findPrevious() {
    const std::wstring output = pane_.text();
    const TextSearch search = searchIn(output);
    show(output, search, search.previous(pane_.selection().begin));
}

// What has been found stays while it grows.
void SearchBar::findWhileTyping() {
    const std::wstring output = pane_.text();
    const TextSearch search = searchIn(output);
    show(output, search, search.next(pane_.selection().begin));
}

void SearchBar::show(const std::wstring& output, const TextSearch& search,
                     std::optional<std::size_t> found) {
    const std::size_t length = text(IDC_SEARCH_WANTED).size();
    if (!found) return setText(IDC_SEARCH_COUNT, length > 0 ? L"Not found" : L"");
    pane_.select({*found, *found + length});
    const std::size_t number = searchIn(output.substr(0, *found + length)).count();
    setText(IDC_SEARCH_COUNT, std::to_wstring(number) + L" of " + std::to_wstring(search.count()));
}

}  // namespace kel::terminal
