#include "bench/instrument/commands.h"

#include <algorithm>
#include <array>

#include "bench/instrument/call.h"
#include "bench/instrument/service_commands.h"
#include "bench/instrument/text.h"

namespace kel::bench {

namespace {

void changeSetting(Call& call, std::string_view name) {
    if (call.arguments.empty()) throw CommandError("missing value");
    call.device.change(name, call.arguments);
}

Answer help(Call&) {
    auto text = commandHelp();
    text.pop_back();
    return {std::move(text)};
}

Answer ver(Call&) {
    return {identity()};
}

Answer sernum(Call& call) {
    return {"Serial Number: " + call.device.serialNumber() + "."};
}

Answer clock(Call& call) {
    return showOrSet(call, formatMoment(call.device.clock(call.now)), [&] {
        const auto moment = parseMoment(call.arguments);
        if (!moment) throw CommandError("bad value, clock takes YYYY/MM/DD HH:MM:SS");
        call.device.setClock(*moment, call.now);
    });
}

Answer pressoffset(Call& call) {
    return showOrSet(call, "Pressure Offset: " + call.device.setup().get("pressoffset") + " dbar",
                     [&] { changeSetting(call, "pressoffset"); });
}

Answer get(Call& call) {
    return {call.device.setup().get(requiredWord(call.arguments, "name"))};
}

Answer set(Call& call) {
    changeSetting(call, requiredWord(call.arguments, "name"));
    return {kDone};
}

Answer show(Call& call) {
    auto text = call.device.setup().toText();
    text.pop_back();
    return {std::move(text)};
}

Answer defaults(Call& call) {
    call.device.replaceSetup({});
    return {kDone};
}

Answer savesetup(Call& call) {
    call.device.saveSetup();
    return {kDone};
}

Answer restoresetup(Call& call) {
    call.device.restoreSetup();
    return {kDone};
}

Answer deploy(Call& call) {
    call.device.deploy(call.now);
    return {kDone};
}

Answer halt(Call& call) {
    call.device.halt(call.now);
    return {kDone};
}

Answer status(Call& call) {
    const auto& device = call.device;
    std::string state = "idle";
    if (device.deployed()) {
        const auto start = device.deploymentStart();
        const bool waiting = device.clock(call.now) < start;
        state = (waiting ? "deployed, begins " : "deployed since ") + formatMoment(start);
    }
    return {"Station: " + device.setup().get("station") + "\nState: " + state +
            "\nRecords: " + std::to_string(device.records(call.now))};
}

Answer erase(Call& call) {
    call.device.eraseRecords();
    return {kDone, std::chrono::seconds{2}};
}

// One line of measured values, as `sample` and `monitor` show it.
std::string sampleLine(const Device& device, Duration now) {
    const auto reading = device.read(now);
    return formatMoment(device.clock(now)) + " " + formatNumber(reading.pressure, 3) + " dbar " +
           formatNumber(reading.heading, 1) + " " + formatNumber(reading.pitch, 1) + " " +
           formatNumber(reading.roll, 1) + " deg";
}

Answer sample(Call& call) {
    return {sampleLine(call.device, call.now)};
}

Answer monitor(Call&) {
    return {kDone, {}, AfterAnswer::kMonitor};
}

Answer sleep(Call&) {
    return {kDone, {}, AfterAnswer::kSleep};
}

struct Command {
    std::string_view name;  // a word, or two
    Answer (*run)(Call&);
    std::string_view usage;
    std::string_view meaning;
};

constexpr std::array kCommands{
    Command{"help", help, "help", "this list"},
    Command{"ver", ver, "ver", "model and firmware"},
    Command{"sernum", sernum, "sernum", "serial number"},
    Command{"clock", clock, "clock [set YYYY/MM/DD HH:MM:SS]", "date and time"},
    Command{"get", get, "get NAME", "a setting's value"},
    Command{"set", set, "set NAME VALUE", "changes a setting, at once and until power-off"},
    Command{"show", show, "show", "all settings"},
    Command{"defaults", defaults, "defaults", "all settings as from the factory"},
    Command{"pressoffset", pressoffset, "pressoffset [set DBAR]", "pressure offset"},
    Command{"savesetup", savesetup, "savesetup", "keeps the settings over a power-off"},
    Command{"restoresetup", restoresetup, "restoresetup", "back to the kept settings"},
    Command{"deploy", deploy, "deploy", "begins to record as set; settings are locked"},
    Command{"halt", halt, "halt", "ends a deployment"},
    Command{"status", status, "status", "station, state, records"},
    Command{"erase", erase, "erase", "empties the memory, takes two seconds"},
    Command{"sample", sample, "sample", "measures once"},
    Command{"monitor", monitor, "monitor", "measures every second until a line end or a break"},
    Command{"pressure collect", pressureCollect, "pressure collect",
            "pressures, four a second, until a line end or a break"},
    Command{"compass calibrate", compassCalibrate, "compass calibrate",
            "headings, pitches and rolls, five a second, likewise"},
    Command{"compass scores", compassScores, "compass scores",
            "horizontal, vertical, field strength of the last calibration"},
    Command{"compass", compass, "compass", "whether there is one"},
    Command{"card list", cardList, "card list NUMBER", "up to 200 files: number, size, time, name"},
    Command{"card read", cardRead, "card read NUMBER OFFSET COUNT",
            "up to 4096 bytes of a file, at the card's rate"},
    Command{"card rate", cardRate, "card rate [set BITS]", "bits a second"},
    Command{"card format", cardFormat, "card format", "empties the card, in five seconds"},
    Command{"card", card, "card", "number of files, bytes, rate"},
    Command{"firmware begin", firmwareBegin, "firmware begin BANK CODE [RATE]",
            "erases the main or the companion bank; no rate is refused"},
    Command{"firmware write", firmwareWrite, "firmware write ADDRESS BYTES",
            "hexadecimal; a last byte makes their sum 0"},
    Command{"firmware end", firmwareEnd, "firmware end CRC32", "checks what was written"},
    Command{"firmware read", firmwareRead, "firmware read BANK ADDRESS COUNT",
            "up to 4096 bytes of the memory"},
    Command{"firmware", firmware, "firmware", "size of a bank, state"},
    Command{"sleep", sleep, "sleep", "until a break or three line ends in a row"},
};

}  // namespace

Answer execute(Device& device, std::string_view line, Duration now) {
    Call call{device, {}, now};
    // A name of two words stands before that which is the first of them.
    const auto command = std::find_if(kCommands.begin(), kCommands.end(), [&](const auto& row) {
        call.arguments = line;
        for (auto name = row.name; !name.empty();) {
            if (!equalIgnoringCase(takeWord(name), takeWord(call.arguments))) return false;
        }
        return true;
    });
    if (command == kCommands.end()) return {"ERROR: unknown command"};
    try {
        return command->run(call);
    } catch (const CommandError& error) {
        return {std::string("ERROR: ") + error.what()};
    }
}

std::string identity() {
    return "Kel virtual field instrument, firmware 1.0";
}

std::string streamLine(Device& device, AfterAnswer stream, Duration now) {
    if (stream == AfterAnswer::kCollect) return device.sensors().pressure(device.read(now), now);
    if (stream == AfterAnswer::kCalibrate) return device.sensors().attitude(device.read(now), now);
    return sampleLine(device, now);
}

Duration streamInterval(AfterAnswer stream) {
    if (stream == AfterAnswer::kCollect) return Sensors::kPressureInterval;
    if (stream == AfterAnswer::kCalibrate) return Sensors::kCompassInterval;
    return std::chrono::seconds{1};
}

std::string commandHelp() {
    constexpr std::size_t kColumn = 34;
    std::string text = "Commands, in any letter case:\n";
    for (const auto& command : kCommands) {
        std::string usage(command.usage);
        usage.resize(std::max(usage.size() + 1, kColumn), ' ');
        text += usage + std::string(command.meaning) + "\n";
    }
    return text + "Settings:\n" + InstrumentSetup::help();
}

}  // namespace kel::bench
