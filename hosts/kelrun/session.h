#pragma once
// Preprocessor, instrument link and stream, put together for a run and taken apart after it.

#include <string_view>

#include "hosts/kelrun/cancel.h"
#include "hosts/kelrun/console_echo.h"
#include "hosts/kelrun/host_script.h"
#include "hosts/kelrun/model/options.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/kelrun/preprocessor.h"
#include "hosts/kelrun/run_events.h"
#include "hosts/kelrun/run_status.h"
#include "hosts/shared/connection.h"

namespace kel::kelrun {

// Link and preprocessor refer to each other: the session parts them, on every way out.
class Session {
public:
    // Connects. `transcript` and `script` may be null; else they are told what happens, and the
    // script reaches the link. They and `trace` must outlive the session. Throws Failure,
    // com::Error.
    Session(const Options& options, const Preprocessor& preprocessor, const Trace& trace,
            Transcript* transcript, HostScript* script);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs the text of a script; false when it stopped, or was not begun since the user has already
    // cancelled. Throws com::Error.
    bool run(std::wstring_view script);

    // True when the user or the last script itself asked for the end.
    bool wasCancelled() const;

    // The line that began last; line 0 when none has.
    const ScriptPlace& place() const { return events_.place(); }

    // Ends the dialogue on the console. True when all of it was shown.
    bool finishDialogue();

private:
    Session(const com::ComPtr<IPreprocessorControl>& preprocessor, const Options& options,
            const Trace& trace, Transcript* transcript, HostScript* script);

    com::ComPtr<IKelStream> connect(const Options& options) const;

    com::ComPtr<IPreprocessorControl> preprocessor_;
    com::ComPtr<IKelCommunicator> communicator_;
    CancelOnInterrupt cancel_;
    RunStatus status_;
    ConsoleEcho echo_;
    Connection connection_;
    HostScript* script_;
    RunEvents events_;
};

}  // namespace kel::kelrun
