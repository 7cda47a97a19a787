#include "bench/link/stream.h"

#include <windows.h>

#include <algorithm>

#include "com/error.h"
#include "com/message_loop.h"
#include "com/scoped.h"

namespace kel::bench {
namespace {

constexpr std::chrono::milliseconds kPollInterval{2};
constexpr long kOwnWriteTimeout = 10000;
// A peer that sends without end must not keep a call for ever.
constexpr std::size_t kMostAtOnce = 256 * 1024;
constexpr std::string_view kBreakSeenByReceiver("\0", 1);

bool endsWith(std::string_view text, std::string_view end) {
    return !end.empty() && text.ends_with(end);
}

// Holds the break state for as long as it lives.
class BreakState {
public:
    explicit BreakState(Transport& transport) : transport_(transport) { transport.holdBreak(true); }
    ~BreakState() {
        try {
            transport_.holdBreak(false);
        } catch (const com::Error&) {
            // A line that stays in the break state is of no use any more.
            transport_.close();
        }
    }
    BreakState(const BreakState&) = delete;
    BreakState& operator=(const BreakState&) = delete;

private:
    Transport& transport_;
};

}  // namespace

void Stream::close() {
    echo_.flush();
    transport_.close();
    forget();
}

void Stream::forget() {
    buffer_.clear();
    first_ = 0;
    lastTaken_ = '\0';
}

std::optional<std::uint8_t> Stream::readByte(long timeout) {
    const Reading reading = read(1, timeout);
    if (!reading.complete) return std::nullopt;
    return static_cast<std::uint8_t>(reading.bytes.front());
}

Stream::Reading Stream::read(std::size_t count, long timeout) {
    Reading reading;
    reading.complete = waitUntil(timeout, [&] {
        while (reading.bytes.size() < count && first_ < buffer_.size()) {
            reading.bytes += takeByte();
        }
        return reading.bytes.size() == count;
    });
    return reading;
}

Stream::Reading Stream::readLine(long timeout) {
    Reading reading;
    bool afterReturn = lastTaken_ == '\r';
    reading.complete = waitUntil(timeout, [&] {
        while (first_ < buffer_.size()) {
            const char byte = takeByte();
            const bool secondOfPair = byte == '\n' && afterReturn;
            afterReturn = false;
            if (secondOfPair) continue;
            if (byte == '\r' || byte == '\n') return true;
            reading.bytes += byte;
        }
        return false;
    });
    return reading;
}

Stream::Reading Stream::waitFor(std::string_view text, std::string_view stopText, long timeout) {
    if (text.empty()) throw com::Error(E_INVALIDARG, L"The text to wait for is empty");
    Reading reading;
    waitUntil(timeout, [&] {
        while (first_ < buffer_.size()) {
            reading.bytes += takeByte();
            reading.complete = endsWith(reading.bytes, text);
            if (reading.complete || endsWith(reading.bytes, stopText)) return true;
        }
        return false;
    });
    return reading;
}

bool Stream::write(std::string_view bytes, long timeout) {
    const bool written =
        writeUntil(deadlineAfter(timeout == 0 ? kOwnWriteTimeout : timeout), bytes);
    echo_.flush();
    return written;
}

bool Stream::writeUntil(Clock::Moment deadline, std::string_view bytes) {
    while (transport_.isOpen()) {
        const std::size_t sent = transport_.send(bytes);
        bytes.remove_prefix(sent);
        if (bytes.empty()) return transport_.isOpen();
        if (hasPassed(deadline)) return false;
        if (sent > 0) continue;
        // An instrument that echoes stops taking bytes when nobody takes its own.
        receive();
        if (!idle(deadline)) return false;
    }
    return false;
}

void Stream::sendBreak(long duration) {
    if (!transport_.isOpen()) throw com::Error(E_FAIL, L"The port is not open");
    {
        const BreakState hold(transport_);
        sleep(duration);
    }
    if (!write(kBreakSeenByReceiver, 0)) throw com::Error(E_FAIL, L"The break was not sent");
}

void Stream::clear() {
    receive();
    echo_.flush();
    requireBytesOrPort();
    if (!isAwaited_) forget();
}

std::size_t Stream::available() {
    receive();
    echo_.flush();
    requireBytesOrPort();
    return buffer_.size() - first_;
}

void Stream::sleep(long duration) {
    const auto deadline = deadlineAfter(duration);
    bool goOn = true;
    do {
        receive();
        goOn = idle(deadline);
    } while (goOn && !hasPassed(deadline));
    receive();
    echo_.flush();
}

bool Stream::idle(Clock::Moment deadline) {
    const auto left = deadline - std::chrono::steady_clock::now();
    const auto duration = std::clamp(std::chrono::duration_cast<std::chrono::milliseconds>(left),
                                     std::chrono::milliseconds(0), kPollInterval);
    if (!idleProcessing_) {
        Sleep(static_cast<DWORD>(duration.count()));
        return true;
    }
    com::sleepUntilMessage(duration);
    return com::runWaitingMessages();
}

Clock::Moment Stream::deadlineAfter(long milliseconds) const {
    if (milliseconds < 0) throw com::Error(E_INVALIDARG, L"A duration is negative");
    return clock_.after(milliseconds);
}

// The one place where bytes come from the transport.
void Stream::receive() {
    std::string bytes;
    while (bytes.size() < kMostAtOnce && transport_.receive(bytes)) {
    }
    if (bytes.empty()) return echo_.flushIfDue();

    buffer_.erase(0, first_);
    first_ = 0;
    buffer_ += bytes;
    echo_.add(bytes);
    log_.append(bytes);
    // Last, since the window's procedure may call back.
    echo_.flushIfDue();
}

void Stream::requireBytesOrPort() const {
    if (buffer_.size() == first_ && !transport_.isOpen()) {
        throw com::Error(E_FAIL, L"The port is not open");
    }
}

char Stream::takeByte() {
    lastTaken_ = buffer_[first_++];
    return lastTaken_;
}

template <class Done>
bool Stream::waitUntil(long timeout, Done&& done) {
    const auto deadline = deadlineAfter(timeout);
    const com::Scoped awaited(isAwaited_, true);
    bool satisfied = false;
    bool goOn = true;
    while (goOn) {
        receive();
        satisfied = done();
        goOn = !satisfied && transport_.isOpen() && !hasPassed(deadline) && idle(deadline);
    }
    echo_.flush();
    return satisfied;
}

}  // namespace kel::bench
