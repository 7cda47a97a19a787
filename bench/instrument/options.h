#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "bench/instrument/event_loop.h"
#include "bench/instrument/gateway.h"
#include "bench/instrument/instrument.h"

namespace kel::bench {

// A command line that makes no sense; the text says why.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct ProgramOptions {
    enum class Transport { kPty, kTcp };

    bool help = false;
    Transport transport = Transport::kPty;
    std::string link;
    std::uint16_t port = 0;
    std::string listenAddress = "127.0.0.1";
    std::optional<GatewayOptions> gateway;
    std::string stateFile;
    std::string transcriptFile;
    InstrumentOptions instrument;
    LoopOptions loop;
};

// Throws UsageError.
ProgramOptions parseOptions(int argumentCount, char** arguments);

std::string programHelp();

}  // namespace kel::bench
