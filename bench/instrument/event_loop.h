#pragma once

#include <chrono>
#include <string>

#include "bench/instrument/file_descriptor.h"
#include "bench/instrument/instrument.h"
#include "bench/instrument/line.h"
#include "bench/instrument/transcript.h"

namespace kel::bench {

struct LoopOptions {
    double timeScale = 1;  // seconds of the instrument's time in a second
    int parent = 0;        // process with whose end the loop ends; 0 for none
};

// Carries bytes between a line and an instrument and lends the instrument a clock. Sleeps in the
// system until something is due.
class EventLoop {
public:
    // From here on SIGINT and SIGTERM of this process end run() and do nothing else. Throws
    // std::system_error, also when there is no process `parent`.
    EventLoop(Instrument& instrument, Line& line, Transcript& transcript,
              const LoopOptions& options);

    // Returns when the process is asked to end, the parent has ended or the line has vanished;
    // the returned text says which. Throws std::system_error.
    std::string run();

private:
    Duration now() const;
    void wait();
    void receive();
    void send();

    Instrument& instrument_;
    Line& line_;
    Transcript& transcript_;
    double timeScale_;
    FileDescriptor signals_;
    FileDescriptor parent_;
    std::chrono::steady_clock::time_point start_;
    std::string unsent_;
    bool lineReadable_ = false;
    std::string endReason_;
};

}  // namespace kel::bench
