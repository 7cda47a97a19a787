#include "hosts/shared/console_output.h"

#include <string>

#include "com/text.h"

namespace kel::host {
namespace {

bool isConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

}  // namespace

ConsoleOutput::ConsoleOutput(DWORD standardHandle)
    : handle_(GetStdHandle(standardHandle)), isConsole_(isConsole(handle_)) {}

void ConsoleOutput::write(std::string_view text) {
    if (broken_ || text.empty()) return;
    broken_ = !(isConsole_ ? writeCharacters(text) : writeBytes(text));
}

bool ConsoleOutput::writeBytes(std::string_view text) const {
    while (!text.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(text.size());
        if (!WriteFile(handle_, text.data(), size, &written, nullptr) || written == 0) return false;
        text.remove_prefix(written);
    }
    return true;
}

bool ConsoleOutput::writeCharacters(std::string_view text) const {
    const std::wstring wide = com::widen(text, CP_UTF8);
    std::wstring_view rest = wide;
    while (!rest.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(rest.size());
        if (!WriteConsoleW(handle_, rest.data(), size, &written, nullptr) || written == 0) {
            return false;
        }
        rest.remove_prefix(written);
    }
    return true;
}

}  // namespace kel::host
