#pragma once
// Everything that the link's streams have in common, over any transport.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bench/link/clock.h"
#include "bench/link/echo.h"
#include "bench/link/log_file.h"
#include "bench/link/transport.h"

namespace kel::bench {

// Whoever asks for bytes first takes what has arrived from the transport into the read buffer;
// there, and nowhere else, it is echoed and logged, so that no byte is shown twice or never.
//
// Every member that waits may run the thread's message loop, and through it be entered again, find
// the port closed or another one opened. A wait ends, without success, when the connection is gone
// or the program is to end. The owner keeps the stream alive for the time of the call.
//
// Durations and time-outs are in milliseconds of the link's clock; a negative one throws
// com::Error, as does a failure of the log file.
class Stream {
public:
    explicit Stream(Transport& transport) : transport_(transport) {}

    const Clock& clock() const { return clock_; }
    Echo& echo() { return echo_; }
    LogFile& log() { return log_; }

    bool idleProcessing() const { return idleProcessing_; }
    void setIdleProcessing(bool enabled) { idleProcessing_ = enabled; }

    // Closes the port and drops what was not read.
    void close();
    // Drops what an earlier connection left behind.
    void forget();

    std::optional<std::uint8_t> readByte(long timeout);

    // What the reading ones have read, and whether it was all that was asked for.
    struct Reading {
        std::string bytes;
        bool complete = false;
    };
    Reading read(std::size_t count, long timeout);
    // Without the line end, which is CR, LF or both.
    Reading readLine(long timeout);
    // Up to and including `text`, or `stopText`, which may be empty.
    Reading waitFor(std::string_view text, std::string_view stopText, long timeout);

    // True when all bytes were written. A time-out of 0 is the stream's own.
    bool write(std::string_view bytes, long timeout);

    // Holds the line in the break state, then sends a NUL: what a receiver sees of a break, for the
    // lines (sockets, pseudo-terminals) that cannot carry one. Throws when the port is not open.
    void sendBreak(long duration);

    // Both throw when the port is not open and nothing is left to read. In the middle of a wait
    // nothing is cleared: what comes is for the wait.
    void clear();
    std::size_t available();

    void sleep(long duration);

    // One step of a wait: lets the message loop run, or sleeps, not beyond the deadline. False when
    // the program is to end.
    bool idle(Clock::Moment deadline);

private:
    Clock::Moment deadlineAfter(long milliseconds) const;
    bool writeUntil(Clock::Moment deadline, std::string_view bytes);
    void receive();
    void requireBytesOrPort() const;
    char takeByte();

    // Waits until done() is true; looks at least once.
    template <class Done>
    bool waitUntil(long timeout, Done&& done);

    Transport& transport_;
    Clock clock_;
    Echo echo_;
    LogFile log_;
    bool idleProcessing_ = true;
    bool isAwaited_ = false;
    // Bytes not yet read; those before first_ have been.
    std::string buffer_;
    std::size_t first_ = 0;
    char lastTaken_ = '\0';
};

}  // namespace kel::bench
