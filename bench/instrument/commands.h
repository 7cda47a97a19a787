#pragma once

#include <string>
#include <string_view>

#include "bench/instrument/device.h"

namespace kel::bench {

enum class AfterAnswer { kPrompt, kSleep, kMonitor };

struct Answer {
    std::string text;  // lines, each but the last ended by '\n'
    Duration takes{0};
    AfterAnswer then = AfterAnswer::kPrompt;
};

// The answer to one command line that is not blank; a refusal is an answer too ("ERROR: ...").
Answer execute(Device& device, std::string_view line, Duration now);

// How the instrument names itself.
std::string identity();

// One line of measured values, as `sample` and `monitor` show it.
std::string sampleLine(const Device& device, Duration now);

// All commands and settings, for people.
std::string commandHelp();

}  // namespace kel::bench
