#pragma once
// The window of a service that looks again and again at what the instrument measures.

#include <initializer_list>
#include <optional>
#include <string>

#include "dialogs/service/model/silence.h"
#include "ui/dialog.h"

namespace kel::service {

// Whatever is asked of the link may run the message loop. Therefore the link is asked by one button
// at a time, and nothing is polled meanwhile; a button may be pressed in the middle of a poll. A
// Cancel that comes while a button is at work is done after that.
class PollingDialog : public ui::Dialog {
protected:
    explicit PollingDialog(com::ObjectCore& component) : Dialog(&component) {}

    // From now on poll() is called every 50 ms. Throws.
    void startPolling();
    virtual void poll() = 0;

    virtual void press(int button) = 0;
    // The dialog is being closed without success, by whatever means.
    virtual void leave() = 0;

    // From now on measurements are expected, or no longer.
    void expectData() { silence_.emplace(GetTickCount64()); }
    void expectNothing() { silence_.reset(); }
    // Called by each poll: tells in the status line where the instrument has fallen silent, until
    // something new comes.
    void watch(bool isNew);

    // What can be pressed next, and what cannot. The focus goes from what cannot to the first that
    // can.
    void offer(std::initializer_list<int> buttons, std::initializer_list<int> others);

    bool command(int control, int notification) final;
    void timer(UINT_PTR identifier) final;

private:
    void close();

    bool isAtWork_ = false;
    bool hasFailedToLeave_ = false;
    bool wasCancelled_ = false;  // while a button is at work
    std::optional<Silence> silence_;
    std::optional<std::wstring> covered_;  // what the status line showed before the silence
};

}  // namespace kel::service
