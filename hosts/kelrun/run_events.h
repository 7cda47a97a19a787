#pragma once
// The events of the preprocessor, on their way into the transcript.

#include <windows.h>

#include <ocidl.h>

#include "com/error.h"
#include "hosts/kelrun/model/transcript.h"
#include "interfaces/KelUtils.h"

namespace kel::kelrun {

// Writes what the preprocessor tells into a transcript while it lives. Throws com::Error.
class RunEvents {
public:
    RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, Transcript& transcript);
    ~RunEvents();
    RunEvents(const RunEvents&) = delete;
    RunEvents& operator=(const RunEvents&) = delete;

private:
    com::ComPtr<IConnectionPoint> source_;
    DWORD cookie_ = 0;
};

}  // namespace kel::kelrun
