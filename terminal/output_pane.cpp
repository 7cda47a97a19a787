#include "terminal/output_pane.h"

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include "com/error.h"
#include "com/scoped.h"
#include "terminal/pane_menu.h"

namespace kel::terminal {
namespace {

constexpr UINT_PTR kSubclass = 0;
constexpr UINT_PTR kFlushTimer = 0x4B45;
constexpr UINT kFlushInterval = 33;
constexpr UINT kLongestRest = 500;
// Showing takes a third of the time, drawing included, half of it when much waits: its thread has
// other things to do. So as not to keep them waiting, it is done in parts that take no longer than
// this (in milliseconds).
constexpr UINT kRestFactor = 2;
constexpr std::size_t kMuchCollected = 1 << 14;
constexpr double kLongestPart = 30;
constexpr std::size_t kSmallestPart = 1 << 12;
// Drawing takes as long as a part. While much waits, few views are enough.
constexpr std::chrono::milliseconds kLongestUndrawn{100};
// Whoever feeds more than that has to wait until a part of it is shown.
constexpr std::size_t kMostCollected = 1 << 16;
// More than any feeder adds: it is the pane that makes room.
constexpr LRESULT kLimitTold = 0x7FFFFFFE;

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

std::wstring timeStamp() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t text[32];
    const int length = std::swprintf(text, std::size(text), L"[%02u:%02u:%02u.%03u] ", now.wHour,
                                     now.wMinute, now.wSecond, now.wMilliseconds);
    return {text, static_cast<std::size_t>(length)};
}

// Keeps the control from drawing anything, its scroll bars included: these it would draw at every
// change in spite of WM_SETREDRAW, which takes longer than the change. Afterwards all of it has to
// be drawn.
class DrawingPause {
public:
    explicit DrawingPause(HWND edit)
        : edit_(edit), wasVisible_((GetWindowLongW(edit, GWL_STYLE) & WS_VISIBLE) != 0) {
        if (wasVisible_) DefWindowProcW(edit_, WM_SETREDRAW, FALSE, 0);
    }
    ~DrawingPause() {
        if (wasVisible_) DefWindowProcW(edit_, WM_SETREDRAW, TRUE, 0);
    }
    DrawingPause(const DrawingPause&) = delete;
    DrawingPause& operator=(const DrawingPause&) = delete;

private:
    HWND edit_;
    bool wasVisible_;
};

bool readsText(UINT message) {
    switch (message) {
        case WM_GETTEXT:
        case WM_COPY:
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
    : edit_(edit), content_([this] { return hasTimeStamps_ ? timeStamp() : std::wstring(); }) {
    if (!SetWindowSubclass(edit, procedure, kSubclass, reinterpret_cast<DWORD_PTR>(this)))
        throw com::lastError();
    ask(EM_SETLIMITTEXT, kLimitTold);
    shown_ = static_cast<std::size_t>(ask(WM_GETTEXTLENGTH));
}

OutputPane::~OutputPane() {
    if (!edit_) return;
    flush();
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
    if (std::exchange(self->asked_, WM_NULL) == message && message != WM_NULL)
        return DefSubclassProc(window, message, wide, longer);
    try {
        return self->process(message, wide, longer);
    } catch (const std::exception&) {
        // What arrived is more than there is room for, and not shown; the pane goes on.
        return 0;
    }
}

// The next procedure in the chain can be called from within this one only.
LRESULT OutputPane::ask(UINT message, WPARAM wide, LPARAM longer) {
    asked_ = message;
    return SendMessageW(edit_, message, wide, longer);
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
            replace(longer);
            return 0;
        case EM_GETSEL:
            // What is collected changes nothing in the selection, unless it makes others go.
            if (pending_.removed > 0 || length() > limit_) flush();
            break;
        case EM_SCROLLCARET:
            // A feeder wants its piece to be seen: that is for the reader to decide.
            return isFeeding_ ? 0 : ask(message, wide, longer);
        case WM_SETTEXT: {
            pending_ = {};
            const LRESULT result = ask(message, wide, longer);
            forget();
            isFeeding_ = shown_ == 0;
            return result;
        }
        case WM_TIMER:
            if (wide != kFlushTimer) break;
            // Text that moves cannot be selected, nor can text that is not drawn.
            if (GetCapture() != edit_) {
                flushPart();
            } else if (isUndrawn_) {
                draw();
            }
            return 0;
        case WM_PAINT: {
            const auto begin = Clock::now();
            const LRESULT result = DefSubclassProc(edit_, message, wide, longer);
            drawing_ = millisecondsSince(begin);
            return result;
        }
        case WM_SIZE:
        case WM_SETFONT:
            keepEndInView(message, wide, longer);
            return 0;
        case WM_CONTEXTMENU:
            showMenu({static_cast<short>(LOWORD(longer)), static_cast<short>(HIWORD(longer))});
            return 0;
    }
    return DefSubclassProc(edit_, message, wide, longer);
}

LRESULT OutputPane::selectFor(WPARAM begin, LPARAM end) {
    const std::size_t told = std::exchange(told_, 0);
    isFeeding_ =
        begin >= length() || (told > 0 && begin == told && end == static_cast<LPARAM>(told));
    if (isFeeding_) return 1;
    // Some feeders put back what was selected, which would scroll to it.
    const Selection now = selected();
    if (begin == now.begin && static_cast<std::size_t>(end) == now.end) return 1;
    flush();
    return ask(EM_SETSEL, begin, end);
}

// Somebody replaces what is selected, wherever it is.
void OutputPane::replace(LPARAM text) {
    flush();
    const bool isInside = selected().end < shown_;
    ask(EM_REPLACESEL, FALSE, text);
    if (isInside) {
        shown_ = static_cast<std::size_t>(ask(WM_GETTEXTLENGTH));
    } else {
        forget();
    }
}

std::size_t OutputPane::length() const {
    // Where room has been made, less may be left than is to be taken back.
    return shown_ - std::min(pending_.removed, shown_) + pending_.added.size();
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
    if (!hasPending()) return;
    if (pending_.added.size() >= kMostCollected && GetCapture() != edit_) {
        flushPart();
    } else if (!hasTimer_) {
        wait();
    }
}

void OutputPane::wait() {
    const UINT factor = pending_.added.size() > kMuchCollected ? 1 : kRestFactor;
    const double work = showing_ + (isUndrawn_ ? 0 : drawing_);
    const UINT rest = std::clamp(static_cast<UINT>(work) * factor, kFlushInterval, kLongestRest);
    hasTimer_ = SetTimer(edit_, kFlushTimer, rest, nullptr) != 0;
    if (!hasTimer_) flush();
}

void OutputPane::flush() {
    if (!edit_ || isShowing_) return;
    if (std::exchange(hasTimer_, false)) KillTimer(edit_, kFlushTimer);
    if (hasPending()) show(std::exchange(pending_, {}), false);
}

// As much as can be shown in a short time; the rest is next.
void OutputPane::flushPart() {
    if (!edit_ || isShowing_) return;
    if (std::exchange(hasTimer_, false)) KillTimer(edit_, kFlushTimer);
    if (!hasPending()) return;

    const auto begin = Clock::now();
    const std::size_t size = std::min(lengthOfPart(), pending_.added.size());
    // Making room is a part by itself.
    const bool makesRoom = shown_ + size > limit_ && shown_ > kept();
    if (makesRoom) {
        show({}, true);
    } else {
        PaneChange part{std::exchange(pending_.removed, 0), pending_.added.substr(0, size)};
        pending_.added.erase(0, size);
        show(part, false);
    }
    showing_ = millisecondsSince(begin);
    if (!makesRoom) adapt(size);
    if (hasPending()) wait();
}

// Whole lines, where there are any.
std::size_t OutputPane::lengthOfPart() const {
    const std::wstring& text = pending_.added;
    if (text.size() <= part_) return text.size();
    std::size_t end = text.rfind(L'\n', part_ - 1);
    if (end == std::wstring::npos) end = text.find(L'\n', part_);
    return end == std::wstring::npos ? text.size() : end + 1;
}

// How quick the control is depends on its text, its font and the machine.
void OutputPane::adapt(std::size_t size) {
    if (showing_ > kLongestPart) {
        part_ = std::max(kSmallestPart, std::min(part_, size) * 3 / 4);
    } else if (showing_ < kLongestPart * 3 / 4 && size >= part_ / 2) {
        part_ = std::min(kMostCollected, part_ + part_ / 4);
    }
}

void OutputPane::draw() {
    if (!edit_) return;
    RedrawWindow(edit_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
    isUndrawn_ = false;
    drawn_ = Clock::now();
}

void OutputPane::show(const PaneChange& change, bool makesRoom) {
    {
        const DrawingPause pause(edit_);
        apply(change, makesRoom);
    }
    isUndrawn_ = pending_.added.size() > kMuchCollected && Clock::now() - drawn_ < kLongestUndrawn;
    if (!isUndrawn_) draw();
}

// The reader's view and selection stay, unless he looks at the end.
void OutputPane::apply(const PaneChange& change, bool makesRoom) {
    const com::Scoped showing(isShowing_, true);
    const bool follows = isAtEnd();
    const auto firstLine = static_cast<int>(ask(EM_GETFIRSTVISIBLELINE));
    const int across = GetScrollPos(edit_, SB_HORZ);
    const Selection before = selected();

    std::size_t cut = 0;
    int cutLines = 0;
    if (!change.added.empty() || change.removed > 0) {
        const std::size_t from = shown_ - std::min(change.removed, shown_);
        ask(EM_SETSEL, from, static_cast<LPARAM>(shown_));
        ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(change.added.c_str()));
        shown_ = from + change.added.size();
    }
    if (makesRoom || shown_ > limit_) {
        const auto lines = static_cast<int>(ask(EM_GETLINECOUNT));
        cut = trim();
        cutLines = lines - static_cast<int>(ask(EM_GETLINECOUNT));
    }
    if (before.begin < before.end && before.end > cut) {
        const std::size_t begin = std::max(before.begin, cut) - cut;
        ask(EM_SETSEL, begin, static_cast<LPARAM>(before.end - cut));
    } else if (makesRoom) {
        ask(EM_SETSEL, shown_, static_cast<LPARAM>(shown_));
    }
    scrollTo(follows ? static_cast<int>(ask(EM_GETLINECOUNT)) - visibleLines()
                     : firstLine - cutLines);
    if (GetScrollPos(edit_, SB_HORZ) != across)
        ask(WM_HSCROLL, static_cast<WPARAM>(MAKELONG(SB_THUMBPOSITION, across)), 0);
}

// Whole lines, a quarter of the limit at least; within a line only where there is no other.
std::size_t OutputPane::trim() {
    std::size_t cut = shown_ - kept();
    const LRESULT line = ask(EM_LINEFROMCHAR, cut);
    const auto next = ask(EM_LINEINDEX, static_cast<WPARAM>(line) + 1);
    if (next > 0 && static_cast<std::size_t>(next) < shown_) cut = static_cast<std::size_t>(next);
    ask(EM_SETSEL, 0, static_cast<LPARAM>(cut));
    ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
    shown_ -= cut;
    return cut;
}

// Somebody else has changed the end of the text.
void OutputPane::forget() {
    shown_ = static_cast<std::size_t>(ask(WM_GETTEXTLENGTH));
    const auto lastLine = static_cast<WPARAM>(ask(EM_GETLINECOUNT) - 1);
    content_.restart(static_cast<std::size_t>(ask(EM_LINEINDEX, lastLine)) == shown_);
}

bool OutputPane::isAtEnd() {
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
    if (edit_ && shown_ > limit_) show({}, true);
}

std::wstring OutputPane::text() {
    std::wstring text(length() + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(edit_, text.data(), static_cast<int>(text.size()))));
    return text;
}

OutputPane::Selection OutputPane::selection() {
    flush();
    return selected();
}

OutputPane::Selection OutputPane::selected() {
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
    const bool hasSelection = selected.begin < selected.end;
    const PaneCommand command = askPaneMenu(edit, place, hasSelection, shown_ > 0);
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
