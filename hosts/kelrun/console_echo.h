#pragma once
// The echo window of the stream: what it is given to show goes to standard output, and into the
// transcript.

#include <string_view>

#include "hosts/kelrun/message_window.h"
#include "hosts/kelrun/model/dialogue_text.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/kelrun/run_status.h"
#include "hosts/shared/console_output.h"

namespace kel::kelrun {

// Stands where a stream expects an edit control, and takes the texts that are put at its end.
class ConsoleEcho final : public MessageWindow {
public:
    // `errorsOnly` leaves the dialogue out, and shows on standard error what went wrong.
    // `status` is wiped before anything is shown. `transcript` may be null; else it is given all
    // texts. Both must outlive this.
    ConsoleEcho(bool errorsOnly, RunStatus& status, Transcript* transcript);

    // Ends the line that is being shown, so that other words begin a new one.
    void finish();

    // True when the dialogue could not be shown to its end.
    bool isIncomplete() const { return hasLost_ || output_.isBroken(); }

private:
    LRESULT handle(UINT message, WPARAM first, LPARAM second) noexcept override;
    void take(std::u16string_view text);
    void show(std::u16string_view text);

    bool errorsOnly_;
    RunStatus& status_;
    Transcript* transcript_;
    ConsoleOutput output_;
    DialogueText text_;
    ErrorLines errors_;
    bool hasLost_ = false;  // for want of memory
};

}  // namespace kel::kelrun
