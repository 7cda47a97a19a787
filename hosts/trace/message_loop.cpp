#include "hosts/trace/message_loop.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace kel::trace {
namespace {

// A window that never validates its region would otherwise be asked to paint for ever.
constexpr int kMostMessages = 100;
constexpr double kLongestSleep = 50;

// False when the program is to end.
bool runMessages() {
    MSG message;
    for (int i = 0; i < kMostMessages && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); ++i) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

}  // namespace

double milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

bool waitUntil(double end, bool runsMessages, const std::function<bool()>& done) {
    for (;;) {
        if (runsMessages && !runMessages()) return false;
        if (done && done()) return true;
        const double left = end - milliseconds();
        if (left <= 0) return false;
        const auto sleep = static_cast<DWORD>(std::ceil(std::min(left, kLongestSleep)));
        if (runsMessages) {
            MsgWaitForMultipleObjectsEx(0, nullptr, sleep, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        } else {
            Sleep(sleep);
        }
    }
}

}  // namespace kel::trace
