#pragma once
// Ctrl+C: the first one asks the running script to stop, the second one ends the process.

#include "com/error.h"
#include "hosts/kelrun/message_window.h"
#include "interfaces/KelUtils.h"

namespace kel::kelrun {

// From now on Ctrl+C ends the process at once, as a cancelled one, unless an object of the class
// below takes it. The system's own end need not tell it from success.
void endAtInterrupt();

// Works while it lives; one at a time. The system calls on a thread of its own: the request reaches
// the script as a message, when the stream lets this thread take its messages.
class CancelOnInterrupt final : public MessageWindow {
public:
    explicit CancelOnInterrupt(com::ComPtr<IPreprocessorControl> preprocessor);
    ~CancelOnInterrupt() override;

    // True once the request has reached this thread, even if no script ran then.
    bool isRequested() const { return requested_; }

private:
    LRESULT handle(UINT message, WPARAM first, LPARAM second) noexcept override;

    com::ComPtr<IPreprocessorControl> preprocessor_;
    bool requested_ = false;
};

}  // namespace kel::kelrun
