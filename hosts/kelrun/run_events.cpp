#include "hosts/kelrun/run_events.h"

namespace kel::kelrun {

using host::EventArguments;
using host::ScriptEvent;

RunEvents::RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, const Trace& trace,
                     RunStatus& status, Transcript* transcript, HostScript* script)
    : trace_(trace),
      status_(status),
      transcript_(transcript),
      script_(script),
      events_(preprocessor, [this](ScriptEvent event, const EventArguments& arguments) {
          try {
              take(event, arguments);
          } catch (...) {
              if (transcript_) transcript_->lose();
              throw;
          }
          if (script_) tellScript(event, arguments);
      }) {}

void RunEvents::take(ScriptEvent event, const EventArguments& arguments) {
    if (event == host::kLineStarted) {
        place_ = {arguments.utf8(0), arguments.number(1)};
        trace_.setPosition(place_.file, static_cast<long>(place_.line));
    }
    status_.follow(event, arguments);
    if (transcript_) tellTranscript(event, arguments);
}

void RunEvents::tellTranscript(ScriptEvent event, const EventArguments& arguments) const {
    switch (event) {
        case host::kLineStarted:
            transcript_->lineStarted(place_.file, place_.line);
            break;
        case host::kLineSent:
            transcript_->sent(arguments.utf8(0));
            break;
        case host::kErrorFound: {
            const std::wstring message = arguments.text(3);
            transcript_->errorFound(arguments.utf8(0), arguments.number(1), arguments.number(2),
                                    std::u16string(message.begin(), message.end()));
            break;
        }
        default:
            break;
    }
}

void RunEvents::tellScript(ScriptEvent event, const EventArguments& arguments) const {
    if (event == host::kLineStarted) {
        script_->lineStarted(place_.file, place_.line);
    } else if (event == host::kErrorFound) {
        script_->errorFound(arguments.utf8(0), arguments.number(1), arguments.number(2),
                            arguments.text(3));
    }
}

}  // namespace kel::kelrun
