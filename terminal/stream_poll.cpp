#include "terminal/stream_poll.h"

#include <atomic>
#include <utility>

#include "com/port.h"
#include "com/variant.h"

namespace kel::terminal {
namespace {

// Of all terminals of the process: reading a stream may run the message loop, and with it the
// timers of others that show the same stream.
class TickGuard {
public:
    ~TickGuard() {
        if (isFirst_) isRunning = false;
    }
    TickGuard() = default;
    TickGuard(const TickGuard&) = delete;
    TickGuard& operator=(const TickGuard&) = delete;

    bool isFirst() const { return isFirst_; }

private:
    inline static std::atomic<bool> isRunning = false;
    const bool isFirst_ = !isRunning.exchange(true);
};

bool isSameObject(IUnknown* left, IUnknown* right) {
    if (!left || !right) return left == right;
    com::ComPtr<IUnknown> leftIdentity;
    com::ComPtr<IUnknown> rightIdentity;
    left->QueryInterface(IID_PPV_ARGS(&leftIdentity));
    right->QueryInterface(IID_PPV_ARGS(&rightIdentity));
    return leftIdentity.Get() == rightIdentity.Get();
}

// By a script.
bool isRead(const com::ComPtr<IKelCommunicator>& link) {
    com::ComPtr<IPreprocessor> preprocessor;
    com::ComPtr<IPreprocessor2> reader;
    com::check(link->get_Preprocessor(&preprocessor), link);
    if (!preprocessor || FAILED(preprocessor.As(&reader))) return false;
    VARIANT_BOOL isReading = VARIANT_FALSE;
    com::check(reader->get_ReadingFromStream(&isReading), reader);
    return com::isTrue(isReading);
}

bool hasToEmpty(const com::ComPtr<IKelStream>& port) {
    long window = 0;
    com::check(port->get_EchoWindow(&window), port);
    if (window == 0) return false;
    long bytes = 0;
    com::check(port->get_BytesInReadBuffer(&bytes), port);
    return bytes != 0;
}

// False when a call fails that has failed the last time, too; throws when it fails anew.
template <class Call>
bool succeeds(bool& hasFailed, const Call& call) {
    try {
        call();
        hasFailed = false;
        return true;
    } catch (const com::Error&) {
        if (std::exchange(hasFailed, true)) return false;
        throw;
    }
}

// Unless the stream echoes elsewhere now.
void giveBack(const com::ComPtr<IKelStream>& stream, long pane) noexcept {
    long window = 0;
    if (SUCCEEDED(stream->get_EchoWindow(&window)) && window == pane) stream->put_EchoWindow(0);
}

}  // namespace

void StreamPoll::claim(const com::ComPtr<IKelCommunicator>& link, HWND pane) {
    com::ComPtr<IKelStream> port;
    try {
        if (pane) port = com::portOf(link);
    } catch (...) {
        release();
        throw;
    }
    const bool isClaimed =
        isSameObject(port.Get(), stream_.Get()) && paneNumber_ == HandleToLong(pane);
    if (!isClaimed) follow(port, pane);
}

void StreamPoll::follow(const com::ComPtr<IKelStream>& port, HWND pane) {
    // The calls may run messages that claim again, or close the window of the pane.
    while (stream_)
        release();
    if (!port || !IsWindow(pane)) return;
    const long number = HandleToLong(pane);
    stream_ = port;
    paneNumber_ = number;
    rests_ = true;
    com::check(port->put_EchoWindow(number), port);
    if (stream_.Get() != port.Get() || paneNumber_ != number) return giveBack(port, number);
    isClaimed_ = true;
    rests_ = false;
}

void StreamPoll::release() noexcept {
    const com::ComPtr<IKelStream> stream = std::exchange(stream_, nullptr);
    rests_ = false;
    if (!stream || !std::exchange(isClaimed_, false)) return;
    giveBack(stream, paneNumber_);
}

template <class Call>
auto StreamPoll::restingIfFails(const com::ComPtr<IKelStream>& port, const Call& call) {
    try {
        return call();
    } catch (const com::Error&) {
        // Another port may have come meanwhile.
        if (isSameObject(port.Get(), stream_.Get())) rests_ = true;
        throw;
    }
}

void StreamPoll::tick(const com::ComPtr<IKelCommunicator>& link, HWND pane) {
    const TickGuard guard;
    if (!guard.isFirst() || !link) return;

    com::ComPtr<IKelStream> port;
    if (!succeeds(hasLinkFailed_, [&] { port = com::portOf(link); })) return;
    if (!isSameObject(port.Get(), stream_.Get())) follow(port, pane);
    if (!port || !stream_ || rests_) return;

    if (!restingIfFails(port, [&] { return hasToEmpty(port); })) return;
    bool isBusy = false;
    if (!succeeds(hasReaderFailed_, [&] { isBusy = isRead(link); }) || isBusy) return;
    restingIfFails(port, [&] { com::check(port->ClearReadBuffer(), port); });
}

}  // namespace kel::terminal
