#pragma once
// Recording and replay of what happens on the instrument link.

#include <functional>
#include <string>
#include <vector>

#include "com/error.h"
#include "hosts/kelrun/model/options.h"
#include "hosts/trace/KelTrace.h"

namespace kel::kelrun {

// What the options ask for: nothing, a recording or a replay. Streams that are created while it
// lives belong to it. Members throw com::Error.
class Trace {
public:
    using Create = std::function<com::ComPtr<IKelCommunicator>()>;

    // Throws Failure (a file that cannot be used, KelTrace.dll missing).
    explicit Trace(const Options& options);

    // The link to run on. A replay has one of its own and creates none.
    com::ComPtr<IKelCommunicator> link(const Create& create) const;

    // Where in a script the calls that follow are made. `file` is UTF-8.
    void setPosition(const std::string& file, long line) const;

    // Ends it, when no object of the link is used any more. What went wrong, or differs, one line
    // each.
    std::vector<std::string> close();

private:
    com::ComPtr<ITraceSession> session_;
    bool isReplay_;
};

}  // namespace kel::kelrun
