#pragma once
// The events of the preprocessor: where a run is, for the transcript and the host script.

#include <cstddef>
#include <string>

#include "hosts/kelrun/host_script.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/kelrun/run_status.h"
#include "hosts/kelrun/trace.h"
#include "hosts/shared/script_events.h"

namespace kel::kelrun {

struct ScriptPlace {
    std::string file;  // UTF-8
    std::size_t line = 0;
};

// Listens to the preprocessor while it lives.
class RunEvents {
public:
    // `transcript` and `script` may be null; else they are told what happens, as is `status`. All
    // must outlive this. Throws com::Error.
    RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, const Trace& trace,
              RunStatus& status, Transcript* transcript, HostScript* script);

    // The line that began last; line 0 when none has.
    const ScriptPlace& place() const { return place_; }

private:
    void take(host::ScriptEvent event, const host::EventArguments& arguments);
    void tellTranscript(host::ScriptEvent event, const host::EventArguments& arguments) const;
    void tellScript(host::ScriptEvent event, const host::EventArguments& arguments) const;

    ScriptPlace place_;
    const Trace& trace_;
    RunStatus& status_;
    Transcript* transcript_;
    HostScript* script_;
    host::ScriptEvents events_;
};

}  // namespace kel::kelrun
