#pragma once
// Keeps a link's stream flowing into the output pane while nobody reads it.

#include <windows.h>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::terminal {

// Shows the stream where to echo what it receives, and empties it now and then. Whoever works on
// the stream for longer sets its EchoWindow to 0 for that time, so a 0 is respected.
class StreamPoll {
public:
    ~StreamPoll() { release(); }

    // Makes a pane the echo window of a link's port, in place of what was claimed before, unless it
    // was so already. Both may be null. Throws com::Error when the stream fails: it is left alone
    // until the port changes.
    void claim(const com::ComPtr<IKelCommunicator>& link, HWND pane);

    // Takes the pane back from the stream that it was given to, unless that echoes elsewhere now.
    void release() noexcept;

    // Empties the stream if it has something and nobody else reads it. Throws com::Error when the
    // stream fails, once for each port, and when the link fails, once until it does so no longer;
    // does nothing while another call of any terminal runs.
    void tick(const com::ComPtr<IKelCommunicator>& link, HWND pane);

private:
    void follow(const com::ComPtr<IKelStream>& port, HWND pane);
    template <class Call>
    auto restingIfFails(const com::ComPtr<IKelStream>& port, const Call& call);

    // The stream that echoes into the pane, or failed to.
    com::ComPtr<IKelStream> stream_;
    long paneNumber_ = 0;
    bool isClaimed_ = false;
    bool rests_ = false;
    bool hasLinkFailed_ = false;
    bool hasReaderFailed_ = false;
};

}  // namespace kel::terminal
