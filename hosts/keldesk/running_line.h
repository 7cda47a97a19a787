#pragma once
// The line of a script that runs: since when, and the wait that it asks for.

#include <chrono>
#include <optional>
#include <string>

#include "com/error.h"
#include "hosts/keldesk/model/line_status.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

class RunningLine {
public:
    // It begins to run now.
    void begin(const std::wstring& script, std::size_t line);
    // It calls a directive, which may be one that waits. Throws com::Error.
    void waitFor(const std::wstring& directive, const com::ComPtr<IFlatCollection>& parameters);
    // What the status bar tells of it at this moment.
    std::wstring status() const;

private:
    std::wstring script_;
    std::size_t line_ = 0;
    std::chrono::steady_clock::time_point start_;
    std::optional<Wait> wait_;
};

}  // namespace kel::keldesk
