#pragma once

#include <string>
#include <string_view>

#include "bench/instrument/device.h"

namespace kel::bench {

// The last three send a line again and again until a line end or a break.
enum class AfterAnswer { kPrompt, kSleep, kMonitor, kCollect, kCalibrate };

struct Answer {
    std::string text;  // lines, each but the last ended by '\n'
    Duration takes{0};
    AfterAnswer then = AfterAnswer::kPrompt;
    std::string data = {};  // bytes of any value, after the lines
};

// The answer to one command line that is not blank; a refusal is an answer too ("ERROR: ...").
Answer execute(Device& device, std::string_view line, Duration now);

// How the instrument names itself.
std::string identity();

// A line of what is sent again and again, and the time between two.
std::string streamLine(Device& device, AfterAnswer stream, Duration now);
Duration streamInterval(AfterAnswer stream);

// All commands and settings, for people.
std::string commandHelp();

}  // namespace kel::bench
