#include "terminal/terminal_window.h"

#include "resources/resource_ids.h"
#include "terminal/model/terminal_layout.h"
#include "ui/dialog_metrics.h"

namespace kel::terminal {
namespace {

constexpr UINT_PTR kPollTimer = 1;
constexpr UINT kPollInterval = 50;

// How many entries of the history the open list shows.
constexpr int kListEntries = 10;

int heightOf(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return static_cast<int>(place.bottom - place.top);
}

void setWindowFont(HWND window, HFONT font) {
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

}  // namespace

SIZE TerminalWindow::naturalSize() {
    return ui::DialogMetrics().pixels(ui::clientOf(IDD_KELTERMINAL));
}

void TerminalWindow::open(HWND parent) {
    createPart(IDD_KELTERMINAL, parent);
    if (!failure_) return;
    close();
    std::rethrow_exception(std::exchange(failure_, nullptr));
}

void TerminalWindow::close() {
    if (window()) DestroyWindow(window());
}

void TerminalWindow::initialise() {
    try {
        build();
    } catch (...) {
        failure_ = std::current_exception();
    }
}

void TerminalWindow::build() {
    SetWindowTextW(window(), L"KelTerminal");
    commandLine_.attach(control(IDC_TERMINAL_COMMAND_LINE));
    output_ = std::make_unique<OutputPane>(control(IDC_TERMINAL_OUTPUT));
    if (!look_.showsCommandLine) show(IDC_TERMINAL_COMMAND_LINE, false);
    arrange();
    if (!SetTimer(window(), kPollTimer, kPollInterval, nullptr)) throw com::lastError();
    followColours();
    followFont();
    output_->clear();

    intercept(commandLine_.edit());
    followOutput();
    events_.opened();
}

void TerminalWindow::destroyed() {
    searchBar_.reset();
    output_.reset();
    commandLine_.attach(nullptr);
}

void TerminalWindow::showFailure(const std::wstring& text) {
    if (output_) output_->addLine(text);
}

void TerminalWindow::arrange() {
    if (!output_) return;
    RECT client{};
    GetClientRect(window(), &client);
    const bool searches = searchBar_ && searchBar_->isOpen();
    const TerminalLayout layout =
        layOut(static_cast<int>(client.right), static_cast<int>(client.bottom),
               searches ? searchBar_->height() : 0,
               look_.showsCommandLine ? heightOf(commandLine_.window()) : 0);
    setPlaceOf(IDC_TERMINAL_OUTPUT, layout.output);
    if (searches) searchBar_->setPlace(layout.searchBar);
    // The height of a combo box is that of its open list as well.
    ui::Rectangle place = layout.commandLine;
    const auto entry = SendMessageW(commandLine_.window(), CB_GETITEMHEIGHT, 0, 0);
    place.bottom += static_cast<int>(entry) * kListEntries;
    setPlaceOf(IDC_TERMINAL_COMMAND_LINE, place);
}

void TerminalWindow::openSearch() {
    if (!searchBar_) {
        auto bar = std::make_unique<SearchBar>(component_, *output_);
        bar->onLayout = [this] { arrange(); };
        bar->onClosed = [this] { takeFocus(); };
        bar->create(window());
        searchBar_ = std::move(bar);
    }
    searchBar_->open();
}

void TerminalWindow::followColours() {
    if (!window()) return;
    outputBrush_ = Brush(look_.outputBackground);
    commandBrush_ = Brush(look_.commandBackground);
    backgroundBrush_ = Brush(look_.background);
    RedrawWindow(window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void TerminalWindow::followFont() {
    if (!output_) return;
    fontWatch_.emplace(look_.font.Get(), [this] {
        applyFont();
        events_.fontChanged();
    });
    applyFont();
}

void TerminalWindow::applyFont() {
    // The children let go of the old one first.
    ole::FontHandle font(look_.font.Get());
    setWindowFont(output_->window(), font.get());
    setWindowFont(commandLine_.window(), font.get());
    font_ = std::move(font);
    arrange();
}

void TerminalWindow::followCommandLine() {
    if (!window()) return;
    const bool hadFocus = commandLine_.hasFocus();
    show(IDC_TERMINAL_COMMAND_LINE, look_.showsCommandLine);
    arrange();
    if (hadFocus) takeFocus();
}

void TerminalWindow::followOutput() {
    if (!output_) return;
    output_->setLimit(look_.outputLimit);
    output_->setTimeStamps(look_.showsTimeStamps);
}

// Never on the output pane: who types there is to type a command.
void TerminalWindow::takeFocus() {
    SetFocus(look_.showsCommandLine ? commandLine_.window() : window());
}

LRESULT TerminalWindow::colour(HDC device, HWND child) const {
    const bool isOutput = child == outputWindow();
    const Brush& brush = isOutput ? outputBrush_ : commandBrush_;
    SetTextColor(device, translated(isOutput ? look_.outputText : look_.commandText));
    SetBkColor(device, brush.colour());
    return reinterpret_cast<LRESULT>(brush.get());
}

bool TerminalWindow::command(int control, int notification) {
    if (control == IDC_TERMINAL_OUTPUT) {
        if (notification == EN_SETFOCUS) takeFocus();
        if (notification == EN_VSCROLL) InvalidateRect(outputWindow(), nullptr, TRUE);
    }
    // What the keys of a dialog send, OK and Cancel, does not end a control.
    return true;
}

std::optional<LRESULT> TerminalWindow::handle(UINT message, WPARAM wide, LPARAM longer) {
    switch (message) {
        case WM_SIZE:
            arrange();
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORMSGBOX:
        case WM_CTLCOLORSCROLLBAR:
        case WM_CTLCOLORSTATIC:
            return colour(reinterpret_cast<HDC>(wide), reinterpret_cast<HWND>(longer));
        case WM_CTLCOLORDLG:
            SetBkColor(reinterpret_cast<HDC>(wide), backgroundBrush_.colour());
            return reinterpret_cast<LRESULT>(backgroundBrush_.get());
        case WM_SETFOCUS:
            if (look_.showsCommandLine) {
                takeFocus();
            } else {
                events_.focusMoved(true);
            }
            return 0;
        case WM_KILLFOCUS:
            if (!IsChild(window(), reinterpret_cast<HWND>(wide))) events_.focusMoved(false);
            return std::nullopt;
        case WM_GETDLGCODE:
            return dialogCode(longer);
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
            return key(message, wide);
        case WM_DESTROY:
            KillTimer(window(), kPollTimer);
            fontWatch_.reset();
            events_.closing();
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

std::optional<LRESULT> TerminalWindow::intercepted(HWND, UINT message, WPARAM wide, LPARAM longer) {
    switch (message) {
        case WM_GETDLGCODE:
            return dialogCode(longer);
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
            // A hidden combo box would step through its list.
            if (!look_.showsCommandLine && isOfCommandLine(keyCommand(message, wide))) return 0;
            return key(message, wide);
        case WM_CHAR:
        case WM_SYSCHAR:
            // The key itself has been handled; its character only makes the edit control beep.
            if (wide == L'\r' || wide == L'\n' || wide == L'F' - L'@') return 0;
            return std::nullopt;
        case WM_SETFOCUS:
            events_.focusMoved(true);
            return std::nullopt;
        case WM_KILLFOCUS: {
            const HWND next = reinterpret_cast<HWND>(wide);
            if (next != window() && !IsChild(window(), next)) events_.focusMoved(false);
            return std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

// Of a control whose keys are seen here first.
std::optional<LRESULT> TerminalWindow::dialogCode(LPARAM asked) const {
    const auto* message = reinterpret_cast<const MSG*>(asked);
    if (!message || !wants(keyCommand(message->message, message->wParam))) return std::nullopt;
    return DLGC_WANTMESSAGE | DLGC_WANTCHARS | DLGC_WANTARROWS | DLGC_HASSETSEL;
}

bool TerminalWindow::wants(KeyCommand command) const {
    if (command == KeyCommand::None || !events_.takesKeys()) return false;
    if (isOfCommandLine(command)) return look_.showsCommandLine;
    // What is selected in the command line is nearer.
    if (command == KeyCommand::Copy) return !look_.showsCommandLine || !commandLine_.hasSelection();
    return true;
}

std::optional<LRESULT> TerminalWindow::key(UINT message, WPARAM key) {
    const KeyCommand command = keyCommand(message, key);
    if (!wants(command)) return std::nullopt;
    run(command);
    return 0;
}

void TerminalWindow::run(KeyCommand command) {
    switch (command) {
        case KeyCommand::None:
            break;
        case KeyCommand::Send:
            events_.sendPressed();
            break;
        case KeyCommand::Newer:
            commandLine_.showNewer();
            break;
        case KeyCommand::Older:
            commandLine_.showOlder();
            break;
        case KeyCommand::PageUp:
            SendMessageW(outputWindow(), WM_VSCROLL, SB_PAGEUP, 0);
            break;
        case KeyCommand::PageDown:
            SendMessageW(outputWindow(), WM_VSCROLL, SB_PAGEDOWN, 0);
            break;
        case KeyCommand::Copy:
            output_->copySelection();
            break;
        case KeyCommand::Search:
            openSearch();
            break;
        case KeyCommand::SearchNext:
            if (searchBar_) searchBar_->findNext();
            break;
        case KeyCommand::SearchPrevious:
            if (searchBar_) searchBar_->findPrevious();
            break;
    }
}

}  // namespace kel::terminal
