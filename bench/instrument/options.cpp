#include "bench/instrument/options.h"

#include <getopt.h>

#include <limits>

#include "bench/instrument/text.h"

namespace kel::bench {

namespace {

enum Option : int {
    kPty = 1,
    kTcp,
    kLink,
    kListen,
    kGateway,
    kGatewayFault,
    kSerialNumber,
    kSilent,
    kSlow,
    kGarble,
    kSeed,
    kTroubleAfter,
    kVanishAfter,
    kFailAfter,
    kCard,
    kAccessCode,
    kBadCell,
    kNoCompass,
    kPressureRamp,
    kPressureNoise,
    kAsleep,
    kState,
    kTimeScale,
    kTranscript,
    kParent,
    kHelp,
};

constexpr option kOptions[] = {
    {"pty", no_argument, nullptr, kPty},
    {"tcp", required_argument, nullptr, kTcp},
    {"link", required_argument, nullptr, kLink},
    {"listen", required_argument, nullptr, kListen},
    {"gateway", required_argument, nullptr, kGateway},
    {"gateway-fault", required_argument, nullptr, kGatewayFault},
    {"serial-number", required_argument, nullptr, kSerialNumber},
    {"silent", no_argument, nullptr, kSilent},
    {"slow", required_argument, nullptr, kSlow},
    {"garble", required_argument, nullptr, kGarble},
    {"seed", required_argument, nullptr, kSeed},
    {"trouble-after", required_argument, nullptr, kTroubleAfter},
    {"vanish-after", required_argument, nullptr, kVanishAfter},
    {"fail-after", required_argument, nullptr, kFailAfter},
    {"card", required_argument, nullptr, kCard},
    {"access-code", required_argument, nullptr, kAccessCode},
    {"bad-cell", required_argument, nullptr, kBadCell},
    {"no-compass", no_argument, nullptr, kNoCompass},
    {"pressure-ramp", required_argument, nullptr, kPressureRamp},
    {"pressure-noise", required_argument, nullptr, kPressureNoise},
    {"asleep", no_argument, nullptr, kAsleep},
    {"state", required_argument, nullptr, kState},
    {"time-scale", required_argument, nullptr, kTimeScale},
    {"transcript", required_argument, nullptr, kTranscript},
    {"parent", required_argument, nullptr, kParent},
    {"help", no_argument, nullptr, kHelp},
    {nullptr, 0, nullptr, 0},
};

constexpr char kUsage[] =
    R"(virtual-instrument: a field instrument behind a pseudo-terminal or a TCP port

usage: virtual-instrument --pty [--link PATH] [options]
       virtual-instrument --tcp PORT [--listen ADDRESS] [options]

The first line on standard output is the device to open or the port to connect to.

Line
  --pty                 a new pseudo-terminal, 8 data bits, raw
  --link PATH           keep a symbolic link to it at PATH
  --tcp PORT            listen on PORT, 0 for a free one; one client is served at a time, others
                        wait for their turn
  --listen ADDRESS      numeric address to listen on, 127.0.0.1 unless given
  --gateway PASSWORD    behind a network gateway that wants this password; an empty one: none
Instrument
  --serial-number TEXT  D123 unless given
  --asleep              asleep at first
  --state FILE          loads its settings from FILE, where savesetup keeps them
  --time-scale F        its time runs F times as fast, so that waits are shorter
  --card KIND           usual unless given; none, empty, full (one file that leaves no room), clash
                        (names that are alike), hostile (names that no folder should see), many
                        (10,000 files), large (a file of 5 GB)
  --access-code N       that loading firmware wants, 0 unless given
  --pressure-ramp R     dbar a second that a collected pressure rises by, 0 unless given
  --pressure-noise N    dbar that it is spread over, 0.05 unless given
Faults
  --silent              never sends anything
  --slow MS             every answer takes MS milliseconds longer
  --garble RATE         damages this share of the bytes it sends, 0 to 1
  --seed N              of the damage, 1 unless given; the same seed damages the same bytes
  --trouble-after N     silent, slow and garbling only after N answered commands
  --gateway-fault KIND  the gateway lets nobody in: refuse, hang or drop
  --vanish-after N      after N answered commands closes the line and ends
  --fail-after N        refuses all commands after N answered ones
  --no-compass          has none
  --bad-cell ADDRESS    the firmware's memory keeps a wrong byte there
Program
  --transcript FILE     writes the dialogue to FILE
  --parent PID          ends with that process
  --help                this text

SIGINT and SIGTERM end it; the link is removed. Exit status: 0 ended as asked (also by
--parent and --vanish-after), 1 failure, 2 bad command line.

A break cannot be seen behind a pseudo-terminal or a socket; a NUL byte stands for it. It ends
sleep and monitoring and is always answered by the banner and the prompt. Three line ends in a
row end sleep too.

)";

std::string nameOf(int value) {
    for (const auto& row : kOptions) {
        if (row.val == value) return std::string("--") + row.name;
    }
    return {};
}

double number(int which, double minimum, double maximum) {
    const auto value = parseNumber(::optarg);
    if (!value || *value < minimum || *value > maximum) {
        throw UsageError("bad value of " + nameOf(which) + ": " + ::optarg);
    }
    return *value;
}

template <class Integer>
Integer integer(int which, Integer minimum, Integer maximum) {
    const double value = number(which, static_cast<double>(minimum), static_cast<double>(maximum));
    const auto whole = static_cast<Integer>(value);
    if (static_cast<double>(whole) != value) {
        throw UsageError("bad value of " + nameOf(which) + ": " + ::optarg);
    }
    return whole;
}

CardKind cardOfOption() {
    const auto kind = cardKind(::optarg);
    if (!kind) throw UsageError(std::string("bad value of --card: ") + ::optarg);
    return *kind;
}

GatewayFault gatewayFault() {
    const std::string_view kind = ::optarg;
    if (kind == "refuse") return GatewayFault::kRefuse;
    if (kind == "hang") return GatewayFault::kHang;
    if (kind == "drop") return GatewayFault::kDrop;
    throw UsageError("bad value of --gateway-fault: " + std::string(kind));
}

}  // namespace

ProgramOptions parseOptions(int argumentCount, char** arguments) {
    ProgramOptions options;
    bool pty = false;
    bool tcp = false;
    auto fault = GatewayFault::kNone;
    ::opterr = 0;
    for (;;) {
        const int place = ::optind;
        const int which = ::getopt_long(argumentCount, arguments, "+:", kOptions, nullptr);
        if (which == -1) break;
        switch (which) {
            case kPty:
                pty = true;
                break;
            case kTcp:
                tcp = true;
                options.port = integer<std::uint16_t>(which, 0, 65535);
                break;
            case kLink:
                options.link = ::optarg;
                break;
            case kListen:
                options.listenAddress = ::optarg;
                break;
            case kGateway:
                options.gateway = GatewayOptions{::optarg};
                break;
            case kGatewayFault:
                fault = gatewayFault();
                break;
            case kSerialNumber:
                options.instrument.serialNumber = ::optarg;
                break;
            case kSilent:
                options.instrument.silent = true;
                break;
            case kSlow:
                options.instrument.slow = std::chrono::milliseconds{integer(which, 0, 3'600'000)};
                break;
            case kGarble:
                options.instrument.garbleRate = number(which, 0, 1);
                break;
            case kSeed:
                options.instrument.seed =
                    integer<std::uint32_t>(which, 0, std::numeric_limits<std::uint32_t>::max());
                break;
            case kTroubleAfter:
                options.instrument.troubleAfter =
                    integer(which, 0, std::numeric_limits<int>::max());
                break;
            case kVanishAfter:
                options.instrument.vanishAfter = integer(which, 1, std::numeric_limits<int>::max());
                break;
            case kFailAfter:
                options.instrument.failAfter = integer(which, 0, std::numeric_limits<int>::max());
                break;
            case kCard:
                options.instrument.card = cardOfOption();
                break;
            case kAccessCode:
                options.instrument.accessCode = integer<long>(which, -2147483647, 2147483647);
                break;
            case kBadCell:
                options.instrument.badCell = integer<std::size_t>(which, 0, Firmware::kSize - 1);
                break;
            case kNoCompass:
                options.instrument.sensors.compass = false;
                break;
            case kPressureRamp:
                options.instrument.sensors.pressureRamp = number(which, -1000, 1000);
                break;
            case kPressureNoise:
                options.instrument.sensors.pressureNoise = number(which, 0, 1000);
                break;
            case kAsleep:
                options.instrument.asleep = true;
                break;
            case kState:
                options.stateFile = ::optarg;
                break;
            case kTimeScale:
                options.loop.timeScale = number(which, 0.001, 1'000'000);
                break;
            case kTranscript:
                options.transcriptFile = ::optarg;
                break;
            case kParent:
                options.loop.parent = integer(which, 1, std::numeric_limits<int>::max());
                break;
            case kHelp:
                options.help = true;
                return options;
            default:
                throw UsageError((which == ':' ? "missing value of " : "unknown option ") +
                                 std::string(arguments[place]));
        }
    }
    if (::optind < argumentCount) {
        throw UsageError(std::string("unexpected argument ") + arguments[::optind]);
    }
    if (pty == tcp) throw UsageError("either --pty or --tcp is needed");
    if (tcp && !options.link.empty()) throw UsageError("--link goes with --pty");
    if (pty && options.gateway) throw UsageError("--gateway goes with --tcp");
    if (options.gateway) options.gateway->fault = fault;
    if (fault != GatewayFault::kNone && !options.gateway) {
        throw UsageError("--gateway-fault goes with --gateway");
    }
    options.transport = pty ? ProgramOptions::Transport::kPty : ProgramOptions::Transport::kTcp;
    return options;
}

std::string programHelp() {
    return kUsage + commandHelp();
}

}  // namespace kel::bench
