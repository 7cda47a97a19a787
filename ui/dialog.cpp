#include "ui/dialog.h"

#include <commctrl.h>

#include <utility>

#include "com/text.h"
#include "ui/atl.h"

namespace kel::ui {
namespace {

// Messages whose result a dialog procedure returns itself, not through DWLP_MSGRESULT.
bool isAnsweredDirectly(UINT message) {
    switch (message) {
        case WM_CTLCOLORMSGBOX:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORSCROLLBAR:
        case WM_CTLCOLORSTATIC:
        case WM_COMPAREITEM:
        case WM_VKEYTOITEM:
        case WM_CHARTOITEM:
        case WM_QUERYDRAGICON:
            return true;
        default:
            return false;
    }
}

// For dialogs from resources, which may hold anything that the platform offers.
void prepareControls() {
    INITCOMMONCONTROLSEX classes{sizeof classes,
                                 ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
    AtlAxWinInit();
}

HCURSOR waitCursor() {
    return LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT));
}

Rectangle toRectangle(const RECT& rectangle) {
    return {static_cast<int>(rectangle.left), static_cast<int>(rectangle.top),
            static_cast<int>(rectangle.right), static_cast<int>(rectangle.bottom)};
}

}  // namespace

Dialog::~Dialog() {
    if (!window_) return;
    // The handlers of the derived class are gone already.
    const HWND window = std::exchange(window_, nullptr);
    SetWindowLongPtrW(window, DWLP_USER, 0);
    DestroyWindow(window);
}

template <class Run>
INT_PTR Dialog::runAs(bool isModal, Run&& run) {
    isModal_ = isModal;
    isInitialising_ = true;
    initialisationFailure_ = nullptr;
    hasEnded_ = false;
    result_ = 0;
    run();
    if (isInitialising_) {
        isInitialising_ = false;
        throw com::lastError();
    }
    // What the loop itself gives is of no use when the end of the program ended it.
    return result_;
}

INT_PTR Dialog::runModal(WORD resource, HWND owner) {
    prepareControls();
    const INT_PTR result = runAs(true, [&] {
        AtlAxDialogBoxA(com::moduleInstance(), MAKEINTRESOURCEA(resource), owner, procedure,
                        reinterpret_cast<LPARAM>(this));
    });
    if (result != IDOK) rethrowInitialisationFailure();
    return result;
}

INT_PTR Dialog::runModal(const DialogTemplate& description, HWND owner) {
    const INT_PTR result = runAs(true, [&] {
        DialogBoxIndirectParamW(com::moduleInstance(), description.get(), owner, procedure,
                                reinterpret_cast<LPARAM>(this));
    });
    if (result != IDOK) rethrowInitialisationFailure();
    return result;
}

void Dialog::create(WORD resource, HWND owner) {
    prepareControls();
    runAs(false, [&] {
        AtlAxCreateDialogA(com::moduleInstance(), MAKEINTRESOURCEA(resource), owner, procedure,
                           reinterpret_cast<LPARAM>(this));
    });
}

void Dialog::createPart(WORD resource, HWND parent) {
    runAs(false, [&] {
        CreateDialogParamW(com::moduleInstance(), MAKEINTRESOURCEW(resource), parent, procedure,
                           reinterpret_cast<LPARAM>(this));
    });
}

void Dialog::create(const DialogTemplate& description, HWND owner) {
    runAs(false, [&] {
        CreateDialogIndirectParamW(com::moduleInstance(), description.get(), owner, procedure,
                                   reinterpret_cast<LPARAM>(this));
    });
}

bool Dialog::command(int control, int) {
    if (control != IDOK && control != IDCANCEL) return false;
    end(control);
    return true;
}

void Dialog::showStatus(std::wstring_view text) {
    setText(statusLine(), text);
    UpdateWindow(control(statusLine()));
}

void Dialog::end(INT_PTR result) {
    if (!window_) return;
    result_ = result;
    hasEnded_ = true;
    if (isModal_) {
        EndDialog(window_, result);
    } else {
        DestroyWindow(window_);
    }
}

std::wstring Dialog::text(int identifier) const {
    return com::windowText(control(identifier));
}

void Dialog::setText(int identifier, std::wstring_view text) {
    SetDlgItemTextW(window_, identifier, std::wstring(text).c_str());
}

void Dialog::enable(int identifier, bool enabled) {
    EnableWindow(control(identifier), enabled);
}

void Dialog::show(int identifier, bool visible) {
    ShowWindow(control(identifier), visible ? SW_SHOW : SW_HIDE);
}

Rectangle Dialog::place() const {
    RECT place{};
    GetWindowRect(window_, &place);
    return toRectangle(place);
}

Rectangle Dialog::placeOf(int identifier) const {
    RECT place{};
    GetWindowRect(control(identifier), &place);
    MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&place), 2);
    return toRectangle(place);
}

void Dialog::setPlaceOf(int identifier, const Rectangle& place) {
    SetWindowPos(control(identifier), nullptr, place.left, place.top, place.width(), place.height(),
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void Dialog::resize(int width, int height) {
    SetWindowPos(window_, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Dialog::intercept(HWND control) {
    if (!SetWindowSubclass(control, controlProcedure, 0, reinterpret_cast<DWORD_PTR>(this)))
        throw com::lastError();
}

LRESULT CALLBACK Dialog::controlProcedure(HWND control, UINT message, WPARAM wide, LPARAM longer,
                                          UINT_PTR identifier, DWORD_PTR dialog) {
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(control, controlProcedure, identifier);
    } else {
        auto* self = reinterpret_cast<Dialog*>(dialog);
        const auto result = self->dispatchControl(control, message, wide, longer);
        if (result) return *result;
    }
    return DefSubclassProc(control, message, wide, longer);
}

std::optional<LRESULT> Dialog::dispatchControl(HWND control, UINT message, WPARAM wide,
                                               LPARAM longer) noexcept {
    // The controls of a dialog that goes are of no interest to it any more.
    if (!window_ || isBusy_) return std::nullopt;
    std::optional<com::KeepAlive> alive;
    if (component_) alive.emplace(*component_);
    try {
        return intercepted(control, message, wide, longer);
    } catch (...) {
        reportFailure();
        return 0;
    }
}

INT_PTR CALLBACK Dialog::procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, longer);
        reinterpret_cast<Dialog*>(longer)->window_ = window;
    }
    auto* dialog = reinterpret_cast<Dialog*>(GetWindowLongPtrW(window, DWLP_USER));
    return dialog ? dialog->dispatch(message, wide, longer) : FALSE;
}

INT_PTR Dialog::dispatch(UINT message, WPARAM wide, LPARAM longer) noexcept {
    std::optional<com::KeepAlive> alive;
    if (component_) alive.emplace(*component_);
    try {
        return process(message, wide, longer);
    } catch (...) {
        if (message == WM_INITDIALOG) initialisationFailure_ = std::current_exception();
        reportFailure();
        return TRUE;
    }
}

Dialog::Busy::Busy(Dialog& dialog)
    : isBusy_(dialog.isBusy_, true), before_(SetCursor(waitCursor())) {}

Dialog::Busy::~Busy() {
    SetCursor(before_);
}

INT_PTR Dialog::process(UINT message, WPARAM wide, LPARAM longer) {
    if (isBusy_ && message == WM_COMMAND && LOWORD(wide) != IDCANCEL) return TRUE;
    if (isBusy_ && message == WM_SETCURSOR) {
        SetCursor(waitCursor());
        SetWindowLongPtrW(window_, DWLP_MSGRESULT, TRUE);
        return TRUE;
    }
    std::optional<LRESULT> result;
    switch (message) {
        case WM_INITDIALOG:
            return begin();
        case WM_COMMAND:
            return command(LOWORD(wide), HIWORD(wide));
        case WM_TIMER:
            tick(wide);
            return TRUE;
        case WM_NOTIFY:
            result = notify(*reinterpret_cast<const NMHDR*>(longer));
            break;
        case WM_NCDESTROY:
            SetWindowLongPtrW(std::exchange(window_, nullptr), DWLP_USER, 0);
            // Inside a message that another thread sent, its loop waits for the next one to see
            // that.
            if (isModal_ && InSendMessage()) PostMessageW(nullptr, WM_NULL, 0, 0);
            destroyed();
            return FALSE;
        default:
            result = handle(message, wide, longer);
    }
    if (!result) return FALSE;
    if (isAnsweredDirectly(message)) return static_cast<INT_PTR>(*result);
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, static_cast<LONG_PTR>(*result));
    return TRUE;
}

INT_PTR Dialog::begin() {
    isInitialising_ = false;
    const bool isPart = (GetWindowLongW(window_, GWL_STYLE) & WS_CHILD) != 0;
    if (!isPart) centreWindow(window_, GetWindow(window_, GW_OWNER));
    initialise();
    const HWND focus = initialFocus();
    if (!focus) return TRUE;
    SetFocus(focus);
    return FALSE;
}

void Dialog::tick(UINT_PTR identifier) {
    if (!runningTimers_.insert(identifier).second) return;
    struct Running {
        ~Running() { timers.erase(identifier); }
        std::set<UINT_PTR>& timers;
        UINT_PTR identifier;
    } const running{runningTimers_, identifier};
    timer(identifier);
}

void Dialog::showFailure(const std::wstring& text) {
    if (statusLine() != 0) {
        showStatus(text);
        return;
    }
    wchar_t title[256] = L"";
    GetWindowTextW(window_, title, static_cast<int>(std::size(title)));
    MessageBoxW(window_, text.c_str(), title, MB_OK | MB_ICONSTOP);
}

// The last resort must not fail itself: where the text cannot be made or shown there is none.
void Dialog::reportFailure() noexcept {
    try {
        const std::wstring text = com::textOfCurrentException();
        if (window_) showFailure(text);
    } catch (...) {
        MessageBeep(MB_ICONSTOP);
    }
}

HWND livingWindow(LONG_PTR handle) {
    const HWND window = reinterpret_cast<HWND>(handle);
    return IsWindow(window) ? window : nullptr;
}

void centreWindow(HWND window, HWND over) {
    const bool isVisible = over && IsWindowVisible(over) && !IsIconic(over);
    const HMONITOR monitor = MonitorFromWindow(over ? over : window, MONITOR_DEFAULTTOPRIMARY);
    MONITORINFO information{};
    information.cbSize = sizeof information;
    RECT own{};
    if (!GetMonitorInfoW(monitor, &information) || !GetWindowRect(window, &own)) return;
    RECT base = information.rcWork;
    if (isVisible) GetWindowRect(over, &base);
    const Rectangle place =
        centred(toRectangle(own), toRectangle(base), toRectangle(information.rcWork));
    SetWindowPos(window, nullptr, place.left, place.top, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace kel::ui
