#pragma once
// The line of a script that runs: since when, and the wait that it asks for.

#include <chrono>
#include <optional>
#include <string>

#include "com/error.h"
#include "hosts/shared/model/line_status.h"
#include "hosts/shared/script_events.h"

namespace kel::host {

class RunningLine {
public:
    // Takes an event of the preprocessor: a line that begins to run now, or a directive that it
    // calls, which may be one that waits. False for any other event. Throws com::Error.
    bool follow(ScriptEvent event, const EventArguments& arguments);

    // How long it has run.
    std::chrono::seconds elapsed() const;
    // What there is to tell of it at this moment.
    std::wstring status() const { return lineStatus(script_, line_, elapsed(), wait_); }

private:
    std::wstring script_;
    std::size_t line_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::optional<Wait> wait_;
};

}  // namespace kel::host
