#pragma once
// The link's port for as long as an access object has its bytes.

#include <string>
#include <string_view>

#include "bench/link/access/home_thread.h"
#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::bench {

// The instrument did not answer, or cannot: operations with a boolean result are then false.
class NoAnswer : public com::Error {
public:
    explicit NoAnswer(std::wstring description) : Error(E_FAIL, std::move(description)) {}
};

// Nothing is echoed meanwhile: the echo window is 0 and comes back at the end, unless somebody else
// has put one by then.
//
// Used from any thread; the port itself only from the one where the link lives. Failures throw
// com::Error, a port that is not open NoAnswer.
class QuietPort {
public:
    QuietPort(IKelCommunicator* link, const HomeThread& home);
    ~QuietPort();
    QuietPort(const QuietPort&) = delete;
    QuietPort& operator=(const QuietPort&) = delete;

    void write(std::string_view bytes);

    // What has arrived. Never waits.
    std::string take();

    // A little pause, in which the link's message loop runs if its port wants that.
    void rest();

    void sendBreak(long duration);

    long baudRate();
    void setBaudRate(long rate);

private:
    template <class Work>
    void call(Work&& work);

    const HomeThread& home_;
    com::ComPtr<IKelStream> port_;
    long echoWindow_ = 0;
};

}  // namespace kel::bench
