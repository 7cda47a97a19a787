#pragma once
// A window between the link and the host's echo window: what the link shows goes through it.

#include <windows.h>

#include <functional>
#include <string>

namespace kel::trace {

// The link is given a hidden window of the calling thread instead of the host's; the messages that
// arrive there go on to the host's window, whose answers come back.
class EchoRelay {
public:
    // `tell` hears every text, before the host's window does.
    explicit EchoRelay(std::function<void(const std::wstring&)> tell) : tell_(std::move(tell)) {}
    ~EchoRelay();
    EchoRelay(const EchoRelay&) = delete;
    EchoRelay& operator=(const EchoRelay&) = delete;

    // The handle that the link gets for the host's one: the hidden window's, or the same where that
    // is none of a window. Throws com::Error.
    long handleFor(long target);

    // The handle that the host gets for the link's one.
    long targetOf(long handle) const;

    // The window to which messages go on, from now.
    void setTarget(long target);
    long target() const { return target_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second);
    LRESULT receive(UINT message, WPARAM first, LPARAM second);

    std::function<void(const std::wstring&)> tell_;
    HWND window_ = nullptr;
    long target_ = 0;
    // Given up until it, or another one, is set again.
    bool targetHangs_ = false;
};

// Forgets the class of the hidden windows. Called when the module is detached.
void unregisterEchoRelays();

}  // namespace kel::trace
