#pragma once
// The other end of a wire: notes when lines begin to arrive, and answers some with OK.

#include <winsock2.h>

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace kel::bench {

// Milliseconds of the performance counter.
double now();

// A listening socket on a port of its own that serves one client on a thread of its own.
class WireEnd {
public:
    // `lineBegan` and `lineEnded` are called on the wire's thread, with the time at which the
    // first byte of the line, or its last one, was there.
    struct Handlers {
        std::function<void(double)> lineBegan;
        std::function<void(WireEnd&, std::string_view, double)> lineEnded;
    };

    explicit WireEnd(Handlers handlers);
    ~WireEnd();
    WireEnd(const WireEnd&) = delete;
    WireEnd& operator=(const WireEnd&) = delete;

    int port() const { return port_; }
    void send(std::string_view bytes);

private:
    void serve();
    void take(std::string_view bytes, double time);

    Handlers handlers_;
    SOCKET listener_;
    std::atomic<SOCKET> client_ = INVALID_SOCKET;
    int port_ = 0;
    std::string line_;
    std::thread thread_;
};

}  // namespace kel::bench
