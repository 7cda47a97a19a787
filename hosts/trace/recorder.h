#pragma once
// Writes a trace file while calls happen.

#include <string>

#include "hosts/trace/file.h"
#include "hosts/trace/model/event.h"

namespace kel::trace {

// Every event is handed to the platform at once, whole: a crash of the host loses none that was
// written, at most the one that is being written.
class Recorder {
public:
    // Both throw com::Error.
    explicit Recorder(const std::wstring& path);
    void write(Event event);

private:
    File file_;
    double started_;
};

}  // namespace kel::trace
