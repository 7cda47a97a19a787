#pragma once
// The thread's message loop, run while something is waited for.

#include <chrono>

namespace kel::com {

// Dispatches the messages that wait, at most a limited number. False when the program is to end:
// the message that says so stays in the queue.
bool runWaitingMessages();

// Sleeps, at the longest `duration`, until a message arrives.
void sleepUntilMessage(std::chrono::milliseconds duration);

}  // namespace kel::com
