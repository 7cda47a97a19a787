#pragma once
// The thread's message loop, run while something is waited for.

#include <windows.h>

#include <chrono>

namespace kel::com {

// Dispatches the messages that wait, at most a limited number; only those of a modeless dialog and
// its controls where one is given. False when the program is to end: the message that says so stays
// in the queue.
bool runWaitingMessages(HWND dialog = nullptr);

// Sleeps, at the longest `duration`, until a message arrives.
void sleepUntilMessage(std::chrono::milliseconds duration);

}  // namespace kel::com
