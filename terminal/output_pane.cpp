#include "terminal/output_pane.h"

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include "com/error.h"
#include "com/scoped.h"
#include "terminal/pane_menu.h"
#include "ui/redraw_pause.h"

namespace kel::terminal {
namespace {

constexpr UINT_PTR kSubclass = 0;
constexpr UINT_PTR kFlushTimer = 0x4B45;
constexpr UINT kFlushInterval = 33;
constexpr UINT kLongestInterval = 500;
// Showing takes a third of the time at most: its thread has other things to do.
constexpr UINT kRestFactor = 2;
// As much is shown without waiting for the timer.
constexpr std::size_t kMostCollected = 1 << 16;
// More than any feeder adds: it is the pane that makes room.
constexpr LRESULT kLimitTold = 0x7FFFFFFE;

std::wstring timeStamp() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t text[32];
    const int length = std::swprintf(text, std::size(text), L"[%02u:%02u:%02u.%03u] ", now.wHour,
                                     now.wMinute, now.wSecond, now.wMilliseconds);
    return {text, static_cast<std::size_t>(length)};
}

bool readsText(UINT message) {
    switch (message) {
        case WM_GETTEXT:
        case WM_COPY:
        case EM_GETSEL:
        case EM_GETLINE:
        case EM_GETLINECOUNT:
        case EM_LINEINDEX:
        case EM_LINELENGTH:
        case EM_LINEFROMCHAR:
        case EM_CHARFROMPOS:
        case EM_POSFROMCHAR:
        case EM_GETHANDLE:
            return true;
        default:
            return false;
    }
}

}  // namespace

OutputPane::OutputPane(HWND edit)
    : edit_(edit),
      content_([this] { return hasTimeStamps_ ? timeStamp() : std::wstring(); }),
      interval_(kFlushInterval) {
    if (!SetWindowSubclass(edit, procedure, kSubclass, reinterpret_cast<DWORD_PTR>(this)))
        throw com::lastError();
    ask(EM_SETLIMITTEXT, kLimitTold);
    shown_ = static_cast<std::size_t>(ask(WM_GETTEXTLENGTH));
}

OutputPane::~OutputPane() {
    if (!edit_) return;
    KillTimer(edit_, kFlushTimer);
    RemoveWindowSubclass(edit_, procedure, kSubclass);
}

LRESULT CALLBACK OutputPane::procedure(HWND window, UINT message, WPARAM wide, LPARAM longer,
                                       UINT_PTR identifier, DWORD_PTR pane) {
    auto* self = reinterpret_cast<OutputPane*>(pane);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, procedure, identifier);
        self->edit_ = nullptr;
        return DefSubclassProc(window, message, wide, longer);
    }
    try {
        return self->process(message, wide, longer);
    } catch (const std::bad_alloc&) {
        // What arrived is not shown; the pane goes on.
        return 0;
    }
}

LRESULT OutputPane::ask(UINT message, WPARAM wide, LPARAM longer) const {
    return DefSubclassProc(edit_, message, wide, longer);
}

LRESULT OutputPane::process(UINT message, WPARAM wide, LPARAM longer) {
    if (readsText(message)) flush();
    switch (message) {
        case WM_GETTEXTLENGTH:
            told_ = length();
            return static_cast<LRESULT>(told_);
        case EM_GETLIMITTEXT:
            return kLimitTold;
        case EM_SETLIMITTEXT:
            return 0;
        case EM_SETSEL:
            return selectFor(wide, longer);
        case EM_REPLACESEL:
            if (isFeeding_) {
                if (const auto* text = reinterpret_cast<const wchar_t*>(longer)) append(text);
                return 0;
            }
            flush();
            ask(message, wide, longer);
            forget();
            return 0;
        case EM_SCROLLCARET:
            // A feeder wants its piece to be seen: that is for the reader to decide.
            return isFeeding_ ? 0 : ask(message, wide, longer);
        case WM_SETTEXT: {
            pending_ = {};
            const LRESULT result = ask(message, wide, longer);
            forget();
            return result;
        }
        case WM_TIMER:
            if (wide != kFlushTimer) break;
            // Text that moves cannot be selected.
            if (GetCapture() != edit_) flush();
            return 0;
        case WM_SIZE:
        case WM_SETFONT:
            keepEndInView(message, wide, longer);
            return 0;
        case WM_CONTEXTMENU:
            showMenu({static_cast<short>(LOWORD(longer)), static_cast<short>(HIWORD(longer))});
            return 0;
    }
    return ask(message, wide, longer);
}

LRESULT OutputPane::selectFor(WPARAM begin, LPARAM end) {
    const std::size_t told = std::exchange(told_, 0);
    isFeeding_ =
        begin >= length() || (told > 0 && begin == told && end == static_cast<LPARAM>(told));
    if (isFeeding_) return 1;
    flush();
    // Some feeders put back what was selected, which would scroll to it.
    const Selection now = selection();
    if (begin == now.begin && static_cast<std::size_t>(end) == now.end) return 1;
    return ask(EM_SETSEL, begin, end);
}

std::size_t OutputPane::length() const {
    return shown_ - pending_.removed + pending_.added.size();
}

void OutputPane::append(std::wstring_view text) {
    content_.take(text, pending_);
    collected();
}

void OutputPane::addLine(std::wstring_view text) {
    if (!content_.isAtLineStart()) content_.take(L"\r\n", pending_);
    content_.take(text, pending_);
    content_.take(L"\r\n", pending_);
    collected();
}

void OutputPane::collected() {
    if (pending_.added.empty() && pending_.removed == 0) return;
    if (pending_.added.size() >= kMostCollected && GetCapture() != edit_) {
        flush();
    } else if (!hasTimer_) {
        hasTimer_ = SetTimer(edit_, kFlushTimer, interval_, nullptr) != 0;
        if (!hasTimer_) flush();
    }
}

void OutputPane::flush() {
    if (!edit_ || isShowing_) return;
    if (std::exchange(hasTimer_, false)) KillTimer(edit_, kFlushTimer);
    if (pending_.added.empty() && pending_.removed == 0) return;

    const com::Scoped showing(isShowing_, true);
    const auto begin = std::chrono::steady_clock::now();
    show();
    const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begin);
    interval_ = std::clamp(static_cast<UINT>(taken.count()) * kRestFactor, kFlushInterval,
                           kLongestInterval);
}

// The reader's view and selection stay, unless he looks at the end.
void OutputPane::show() {
    PaneChange change = std::exchange(pending_, {});
    const bool follows = isAtEnd();
    const auto firstLine = static_cast<int>(ask(EM_GETFIRSTVISIBLELINE));
    SCROLLINFO across{};
    across.cbSize = sizeof across;
    across.fMask = SIF_POS;
    GetScrollInfo(edit_, SB_HORZ, &across);
    DWORD selectionBegin = 0;
    DWORD selectionEnd = 0;
    ask(EM_GETSEL, reinterpret_cast<WPARAM>(&selectionBegin),
        reinterpret_cast<LPARAM>(&selectionEnd));

    const std::size_t from = shown_ - std::min(change.removed, shown_);
    std::size_t cut = 0;
    int cutLines = 0;
    {
        const ui::RedrawPause pause(edit_);
        ask(EM_SETSEL, from, static_cast<LPARAM>(shown_));
        ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(change.added.c_str()));
        shown_ = from + change.added.size();
        if (shown_ > limit_) {
            const auto lines = static_cast<int>(ask(EM_GETLINECOUNT));
            cut = trim();
            cutLines = lines - static_cast<int>(ask(EM_GETLINECOUNT));
        }
        if (selectionBegin < selectionEnd && selectionEnd > cut) {
            const std::size_t begin = std::max<std::size_t>(selectionBegin, cut) - cut;
            ask(EM_SETSEL, begin, static_cast<LPARAM>(selectionEnd - cut));
        }
        scrollTo(follows ? static_cast<int>(ask(EM_GETLINECOUNT)) - visibleLines()
                         : firstLine - cutLines);
        ask(WM_HSCROLL, MAKEWPARAM(SB_THUMBPOSITION, across.nPos), 0);
    }
}

// Whole lines, a quarter of the limit at least; within a line only where there is no other.
std::size_t OutputPane::trim() {
    std::size_t cut = shown_ - (limit_ - limit_ / 4);
    const LRESULT line = ask(EM_LINEFROMCHAR, cut);
    const auto next = ask(EM_LINEINDEX, static_cast<WPARAM>(line) + 1);
    if (next > 0 && static_cast<std::size_t>(next) < shown_) cut = static_cast<std::size_t>(next);
    ask(EM_SETSEL, 0, static_cast<LPARAM>(cut));
    ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
    shown_ -= cut;
    ask(EM_SETSEL, shown_, static_cast<LPARAM>(shown_));
    return cut;
}

// Somebody else has changed the text.
void OutputPane::forget() {
    shown_ = static_cast<std::size_t>(ask(WM_GETTEXTLENGTH));
    content_.clear();
}

bool OutputPane::isAtEnd() const {
    return ask(EM_GETFIRSTVISIBLELINE) + visibleLines() >= ask(EM_GETLINECOUNT);
}

int OutputPane::visibleLines() const {
    SCROLLINFO down{};
    down.cbSize = sizeof down;
    down.fMask = SIF_PAGE;
    GetScrollInfo(edit_, SB_VERT, &down);
    return std::max(1, static_cast<int>(down.nPage));
}

void OutputPane::scrollTo(int firstLine) {
    const auto now = static_cast<int>(ask(EM_GETFIRSTVISIBLELINE));
    const int wanted = std::max(0, firstLine);
    if (wanted != now) ask(EM_LINESCROLL, 0, wanted - now);
}

void OutputPane::keepEndInView(UINT message, WPARAM wide, LPARAM longer) {
    const bool follows = isAtEnd();
    ask(message, wide, longer);
    if (follows) scrollTo(static_cast<int>(ask(EM_GETLINECOUNT)) - visibleLines());
}

void OutputPane::clear() {
    pending_ = {};
    SetWindowTextW(edit_, L"");
}

void OutputPane::setLimit(std::size_t characters) {
    limit_ = characters;
    flush();
    if (edit_ && shown_ > limit_) show();
}

std::wstring OutputPane::text() {
    std::wstring text(length() + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(edit_, text.data(), static_cast<int>(text.size()))));
    return text;
}

OutputPane::Selection OutputPane::selection() {
    flush();
    DWORD begin = 0;
    DWORD end = 0;
    ask(EM_GETSEL, reinterpret_cast<WPARAM>(&begin), reinterpret_cast<LPARAM>(&end));
    return {begin, end};
}

void OutputPane::select(Selection selection) {
    flush();
    ask(EM_SETSEL, selection.begin, static_cast<LPARAM>(selection.end));
    ask(EM_SCROLLCARET);
}

void OutputPane::selectAll() {
    flush();
    ask(EM_SETSEL, 0, -1);
}

void OutputPane::copySelection() {
    const Selection selected = selection();
    if (selected.begin < selected.end) ask(WM_COPY);
}

void OutputPane::showMenu(POINT place) {
    const HWND edit = edit_;
    const Selection selected = selection();
    // From the keyboard there is no place.
    if (place.x == -1 && place.y == -1) {
        place = {0, 0};
        ClientToScreen(edit_, &place);
    }
    const PaneCommand command = askPaneMenu(edit, place, selected.begin<selected.end, shown_> 0);
    // The window, and this with it, may have gone while the menu was open.
    DWORD_PTR pane = 0;
    if (!GetWindowSubclass(edit, procedure, kSubclass, &pane)) return;
    switch (command) {
        case PaneCommand::None:
            break;
        case PaneCommand::Copy:
            return copySelection();
        case PaneCommand::SelectAll:
            return selectAll();
        case PaneCommand::Clear:
            return clear();
    }
}

}  // namespace kel::terminal
