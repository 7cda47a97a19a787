#pragma once
// The events of the preprocessor: where a run is, and what a transcript tells of it.

#include <windows.h>

#include <ocidl.h>

#include <cstddef>
#include <string>

#include "com/error.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/kelrun/trace.h"
#include "interfaces/KelUtils.h"

namespace kel::kelrun {

struct ScriptPlace {
    std::string file;  // UTF-8
    std::size_t line = 0;
};

// Listens to the preprocessor while it lives.
class RunEvents {
public:
    // `transcript` may be null; else it is told what happens. Both must outlive this. Throws
    // com::Error.
    RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, const Trace& trace,
              Transcript* transcript);
    ~RunEvents();
    RunEvents(const RunEvents&) = delete;
    RunEvents& operator=(const RunEvents&) = delete;

    // The line that began last; line 0 when none has.
    const ScriptPlace& place() const { return place_; }

private:
    ScriptPlace place_;
    com::ComPtr<IConnectionPoint> source_;
    DWORD cookie_ = 0;
};

}  // namespace kel::kelrun
