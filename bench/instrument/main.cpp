#include <ctime>
#include <exception>
#include <iostream>
#include <memory>
#include <utility>

#include "bench/instrument/event_loop.h"
#include "bench/instrument/options.h"
#include "bench/instrument/pty.h"
#include "bench/instrument/state_file.h"
#include "bench/instrument/tcp_listener.h"

namespace {

using namespace kel::bench;

std::chrono::local_seconds localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return std::chrono::local_seconds{std::chrono::seconds{now + local.tm_gmtoff}};
}

std::unique_ptr<Line> openLine(const ProgramOptions& options) {
    if (options.transport == ProgramOptions::Transport::kPty) {
        return std::make_unique<Pty>(options.link);
    }
    return std::make_unique<TcpListener>(options.listenAddress, options.port, options.gateway);
}

void serve(ProgramOptions options) {
    options.instrument.clock = localTime();
    if (!options.stateFile.empty()) {
        options.instrument.setup = loadSetup(options.stateFile);
        options.instrument.store = [file = options.stateFile](const InstrumentSetup& setup) {
            return storeSetup(file, setup);
        };
    }
    Transcript transcript(options.transcriptFile);
    Instrument instrument(options.instrument);
    const auto line = openLine(options);
    EventLoop loop(instrument, *line, transcript, options.loop);
    std::cout << line->address() << std::endl;
    std::cerr << "virtual-instrument: " << loop.run() << '\n';
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        auto options = parseOptions(argumentCount, arguments);
        if (options.help) {
            std::cout << programHelp();
            return 0;
        }
        serve(std::move(options));
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "virtual-instrument: " << error.what() << " (--help shows the options)\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "virtual-instrument: " << error.what() << '\n';
        return 1;
    }
}
