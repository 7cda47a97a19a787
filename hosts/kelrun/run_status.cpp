#include "hosts/kelrun/run_status.h"

#include <exception>

namespace kel::kelrun {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kPeriod = 250;  // milliseconds: each second is told near its beginning

}  // namespace

CONSOLE_SCREEN_BUFFER_INFO ErrorScreen::info() const {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(handle_, &info);
    return info;
}

bool ErrorScreen::isConsole() const {
    CONSOLE_SCREEN_BUFFER_INFO info;
    return GetConsoleScreenBufferInfo(handle_, &info) != FALSE;
}

std::size_t ErrorScreen::column() const {
    return static_cast<std::size_t>(info().dwCursorPosition.X);
}

std::size_t ErrorScreen::width() const {
    return static_cast<std::size_t>(info().dwSize.X);
}

// A console that takes nothing shows nothing: no reason to disturb the run.
void ErrorScreen::write(std::wstring_view text) {
    DWORD written = 0;
    WriteConsoleW(handle_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void ErrorScreen::moveUp(std::size_t rows, std::size_t column) {
    COORD place = info().dwCursorPosition;
    place.X = static_cast<SHORT>(column);
    place.Y = static_cast<SHORT>(place.Y - static_cast<SHORT>(rows));
    SetConsoleCursorPosition(handle_, place);
}

RunStatus::RunStatus(bool isWanted) {
    isShowing_ =
        isWanted && screen_.isConsole() && SetTimer(window(), kTimer, kPeriod, nullptr) != 0;
}

void RunStatus::follow(host::ScriptEvent event, const host::EventArguments& arguments) {
    if (isShowing_ && line_.follow(event, arguments)) wipe();
}

void RunStatus::wipe() {
    if (isShowing_) status_.wipe();
}

void RunStatus::end() {
    wipe();
    if (std::exchange(isShowing_, false)) KillTimer(window(), kTimer);
}

LRESULT RunStatus::handle(UINT message, WPARAM first, LPARAM second) noexcept {
    if (message != WM_TIMER) return MessageWindow::handle(message, first, second);
    try {
        if (isShowing_ && line_.elapsed() >= host::kWorthTelling) status_.show(line_.status());
    } catch (const std::exception&) {
        // Without memory for the text there is none.
    }
    return 0;
}

}  // namespace kel::kelrun
