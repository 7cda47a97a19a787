#include "bench/instrument/event_loop.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <optional>

#include "bench/instrument/system_error.h"

namespace kel::bench {

namespace {

// What a host does not read is lost beyond this, as on a real line.
constexpr std::size_t kMostUnsent = 256 * 1024;

FileDescriptor endSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (::sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) throwSystemError("signals");
    FileDescriptor descriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
    if (!descriptor) throwSystemError("signals");
    return descriptor;
}

// Readable when the process has ended, also while nobody has collected its status.
FileDescriptor endOfProcess(int process) {
    if (process == 0) return {};
    FileDescriptor descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    if (!descriptor) throwSystemError("parent " + std::to_string(process));
    return descriptor;
}

std::optional<timespec> timeUntil(std::optional<Duration> due, Duration now, double timeScale) {
    if (!due) return std::nullopt;
    const double nanoseconds =
        std::chrono::duration<double, std::nano>(std::max(*due - now, Duration{0})).count() /
        timeScale;
    // Rounded up, or the loop would come back a little before the time, for nothing.
    const auto whole = static_cast<long long>(nanoseconds) + 1;
    return timespec{static_cast<time_t>(whole / 1'000'000'000),
                    static_cast<long>(whole % 1'000'000'000)};
}

}  // namespace

EventLoop::EventLoop(Instrument& instrument, Line& line, Transcript& transcript,
                     const LoopOptions& options)
    : instrument_(instrument),
      line_(line),
      transcript_(transcript),
      timeScale_(options.timeScale),
      signals_(endSignals()),
      parent_(endOfProcess(options.parent)),
      start_(std::chrono::steady_clock::now()) {}

std::string EventLoop::run() {
    for (;;) {
        send();
        if (instrument_.vanished() && unsent_.empty()) {
            endReason_ = "the line has vanished";
        }
        if (!endReason_.empty()) return endReason_;
        wait();
        if (lineReadable_) receive();
    }
}

Duration EventLoop::now() const {
    const auto elapsed = std::chrono::steady_clock::now() - start_;
    return Duration{static_cast<Duration::rep>(
        std::chrono::duration<double, std::micro>(elapsed).count() * timeScale_)};
}

void EventLoop::wait() {
    const short lineEvents = unsent_.empty() ? POLLIN : POLLIN | POLLOUT;
    std::array<pollfd, 3> descriptors{pollfd{line_.descriptor(), lineEvents, 0},
                                      pollfd{signals_.get(), POLLIN, 0},
                                      pollfd{parent_.get(), POLLIN, 0}};
    const auto time = timeUntil(instrument_.nextDue(), now(), timeScale_);
    const int ready =
        ::ppoll(descriptors.data(), descriptors.size(), time ? &*time : nullptr, nullptr);
    if (ready < 0 && errno != EINTR) throwSystemError("poll");
    lineReadable_ = ready > 0 && (descriptors[0].revents & ~POLLOUT) != 0;
    if (ready <= 0) return;
    if (descriptors[1].revents != 0) endReason_ = "asked to end";
    if (descriptors[2].revents != 0) endReason_ = "the parent process has ended";
}

void EventLoop::receive() {
    std::string bytes;
    switch (line_.receive(bytes)) {
        case LineEvent::kNothing:
            break;
        case LineEvent::kBytes:
            transcript_.received(now(), bytes);
            instrument_.feed(bytes, now());
            break;
        case LineEvent::kConnected:
            transcript_.note(now(), "connected");
            break;
        case LineEvent::kDisconnected:
            transcript_.note(now(), "disconnected");
            instrument_.dropLine();
            unsent_.clear();
            break;
    }
}

void EventLoop::send() {
    const auto bytes = instrument_.take(now());
    if (!line_.connected()) return;
    transcript_.sent(now(), bytes);
    unsent_.append(bytes, 0, kMostUnsent - std::min(kMostUnsent, unsent_.size()));
    if (!unsent_.empty()) unsent_.erase(0, line_.send(unsent_));
}

}  // namespace kel::bench
