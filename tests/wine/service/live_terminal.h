#pragma once
// A terminal beside what is tested, ticking all the time.

#include <atomic>
#include <string>
#include <thread>

#include "com/message_loop.h"
#include "tests/wine/support/library.h"
#include "tests/wine/terminal/container.h"

namespace kel::test {

// A terminal that has nothing else to do: one tick after the other reaches whoever runs messages.
class LiveTerminal {
public:
    explicit LiveTerminal(IKelCommunicator* link) {
        com::check(terminal_.As(&object_));
        com::check(object_->SetClientSite(container_.site()));
        com::check(object_->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, container_.site(), 0,
                                   container_.window(), nullptr));
        com::check(terminal_->put_Communicator(link));
        long window = 0;
        com::check(terminal_->get_hwnd(&window));
        window_ = static_cast<HWND>(LongToHandle(window));
        ticker_ = std::thread([this] {
            DWORD_PTR result = 0;
            while (!isOver_)
                SendMessageTimeoutW(window_, WM_TIMER, 1, 0, SMTO_NORMAL, 50, &result);
        });
    }
    ~LiveTerminal() {
        isOver_ = true;
        ticker_.join();
        object_->Close(OLECLOSE_NOSAVE);
        object_->SetClientSite(nullptr);
    }

    HWND pane() const { return GetDlgItem(window_, 201); }
    std::wstring text() const { return com::windowText(pane()); }
    void limit(long characters) { com::check(terminal_->put_OutputLimit(characters)); }
    // Runs messages until it shows a prompt behind so many characters, which may be in vain.
    bool runUntilPrompt(std::chrono::milliseconds patience, std::size_t behind = 0) const {
        const auto end = std::chrono::steady_clock::now() + patience;
        const auto isThere = [&] { return text().size() > behind && text().ends_with(L"\r\n>"); };
        while (!isThere() && std::chrono::steady_clock::now() < end) {
            com::sleepUntilMessage(std::chrono::milliseconds(10));
            com::runWaitingMessages();
        }
        return isThere();
    }

private:
    Container container_;
    com::ComPtr<IKelTerminal3> terminal_ = kelUtils().create<IKelTerminal3>(CLSID_KelTerminal);
    com::ComPtr<IOleObject> object_;
    HWND window_ = nullptr;
    std::atomic<bool> isOver_ = false;
    std::thread ticker_;
};

}  // namespace kel::test
