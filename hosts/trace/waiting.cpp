#include "hosts/trace/waiting.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "com/message_loop.h"

namespace kel::trace {
namespace {

constexpr double kLongestSleep = 50;

}  // namespace

double milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

bool waitUntil(double end, bool runsMessages, const std::function<bool()>& done) {
    for (;;) {
        if (runsMessages && !com::runWaitingMessages()) return false;
        if (done && done()) return true;
        const double left = end - milliseconds();
        if (left <= 0) return false;
        const auto sleep = static_cast<DWORD>(std::ceil(std::min(left, kLongestSleep)));
        if (runsMessages) {
            com::sleepUntilMessage(std::chrono::milliseconds(sleep));
        } else {
            Sleep(sleep);
        }
    }
}

}  // namespace kel::trace
