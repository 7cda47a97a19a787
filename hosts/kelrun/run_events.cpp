#include "hosts/kelrun/run_events.h"

namespace kel::kelrun {

using host::EventArguments;
using host::ScriptEvent;

RunEvents::RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, const Trace& trace,
                     Transcript* transcript)
    : trace_(trace),
      transcript_(transcript),
      events_(preprocessor, [this](ScriptEvent event, const EventArguments& arguments) {
          try {
              take(event, arguments);
          } catch (...) {
              if (transcript_) transcript_->lose();
              throw;
          }
      }) {}

void RunEvents::take(ScriptEvent event, const EventArguments& arguments) {
    if (event == host::kLineStarted) {
        place_ = {arguments.utf8(0), arguments.number(1)};
        trace_.setPosition(place_.file, static_cast<long>(place_.line));
    }
    if (transcript_) tell(event, arguments);
}

void RunEvents::tell(ScriptEvent event, const EventArguments& arguments) const {
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

}  // namespace kel::kelrun
