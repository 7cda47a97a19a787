#include "hosts/kelrun/console_echo.h"

#include <exception>
#include <string>

namespace kel::kelrun {

ConsoleEcho::ConsoleEcho(bool errorsOnly, RunStatus& status, Transcript* transcript)
    : errorsOnly_(errorsOnly),
      status_(status),
      transcript_(transcript),
      output_(errorsOnly ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE) {}

void ConsoleEcho::finish() {
    if (errorsOnly_) {
        output_.write(errors_.finish());
    } else if (!text_.atLineStart()) {
        show(u"\n");
    }
}

LRESULT ConsoleEcho::handle(UINT message, WPARAM first, LPARAM second) noexcept {
    switch (message) {
        case EM_SETSEL:
            return TRUE;  // the end is the only place there is
        case EM_REPLACESEL:
            try {
                if (second) take(reinterpret_cast<const char16_t*>(second));
            } catch (const std::exception&) {
                hasLost_ = true;
                if (transcript_) transcript_->lose();
            }
            return TRUE;
        default:
            return MessageWindow::handle(message, first, second);
    }
}

void ConsoleEcho::take(std::u16string_view text) {
    show(text);
    if (transcript_) transcript_->shown(text);
}

void ConsoleEcho::show(std::u16string_view text) {
    status_.wipe();
    const std::string readable = text_.next(text);
    output_.write(errorsOnly_ ? errors_.next(readable) : readable);
}

}  // namespace kel::kelrun
