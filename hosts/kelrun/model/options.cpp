#include "hosts/kelrun/model/options.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "hosts/shared/model/failure.h"

namespace kel::kelrun {
namespace {

constexpr long kHighestBaudRate = 4'000'000;
constexpr double kHighestSpeed = 1e6;
constexpr std::size_t kHelpColumn = 23;

[[noreturn]] void refuse(std::string_view text) {
    throw Failure(ExitCode::kUsage, std::string(text) + " (--help shows the options)");
}

void setBaudRate(Options& options, std::string_view value) {
    const auto [end, error] =
        std::from_chars(value.data(), value.data() + value.size(), options.target.baudRate);
    if (error != std::errc() || end != value.data() + value.size() || options.target.baudRate < 1 ||
        options.target.baudRate > kHighestBaudRate) {
        refuse("--baud: '" + std::string(value) + "' is no rate");
    }
}

void setSpeed(Options& options, std::string_view value) {
    const auto [end, error] =
        std::from_chars(value.data(), value.data() + value.size(), options.speed);
    if (error != std::errc() || end != value.data() + value.size() ||
        !(options.speed >= 0 && options.speed <= kHighestSpeed)) {
        refuse("--speed: '" + std::string(value) + "' is no speed");
    }
}

NamedText readNamed(std::string_view option, std::string_view value) {
    const std::size_t equals = value.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        refuse(std::string(option) + ": '" + std::string(value) + "' is not NAME=VALUE");
    }
    return {std::string(value.substr(0, equals)), std::string(value.substr(equals + 1))};
}

template <auto member>
void setText(Options& options, std::string_view value) {
    options.*member = std::string(value);
}

template <std::string Target::*member>
void setPlace(Options& options, std::string_view value) {
    options.target.*member = std::string(value);
}

template <bool Options::*member>
void setFlag(Options& options, std::string_view) {
    options.*member = true;
}

struct Option {
    std::string_view name;
    std::string_view parameter;  // empty: takes no value
    std::string_view help;       // empty: told in the row above
    void (*apply)(Options&, std::string_view value);
    bool repeatable = false;
};

// A new option is a new row: parsing and --help follow.
constexpr Option kOptions[] = {
    {"--port", "NAME", "serial port of the instrument, such as COM3", setPlace<&Target::port>},
    {"--baud", "RATE", "its speed in bits a second; 9600 unless given", setBaudRate},
    {"--tcp", "HOST:PORT", "instrument behind a network gateway", setPlace<&Target::tcp>},
    {"--last", "", "connects as last time; --app NAME: as that program did",
     setFlag<&Options::last>},
    {"--app", "NAME", "", setText<&Options::application>},
    {"--link", "PROGID", "instrument link; BenchLink.Communicator unless given",
     setText<&Options::link>},
    {"--var", "NAME=VALUE", "sets a script variable; may be given several times",
     [](Options& options, std::string_view value) {
         options.variables.push_back(readNamed("--var", value));
     },
     true},
    {"--answer", "NAME=VALUE", "answers a question, or msgbox; --interactive: asks",
     [](Options& options, std::string_view value) {
         options.answers.push_back(readNamed("--answer", value));
     },
     true},
    {"--interactive", "", "", setFlag<&Options::interactive>},
    {"--host", "FILE", "a JScript that adds words and watches; -- ARGS",
     setText<&Options::hostScript>},
    {"--script-path", "P", "where scripts look for scripts; else SCRIPT's folder",
     setText<&Options::scriptPath>},
    {"--system-path", "P", "where they look next", setText<&Options::systemPath>},
    {"--check", "", "shows errors and warnings, runs nothing; --json: as JSON",
     setFlag<&Options::check>},
    {"--json", "", "", setFlag<&Options::json>},
    {"--diagnose", "", "tells how components are registered, and what is wrong",
     setFlag<&Options::diagnose>},
    {"--keep-going", "", "runs a script in spite of its errors", setFlag<&Options::keepGoing>},
    {"--print-variables", "", "shows all variables after the run",
     setFlag<&Options::printVariables>},
    {"--transcript", "FILE", "writes what happens as JSON Lines; --report FILE: a page",
     setText<&Options::transcript>},
    {"--report", "FILE", "", setText<&Options::report>},
    {"--record", "FILE", "writes all calls on the link to a file", setText<&Options::record>},
    {"--replay", "FILE", "runs on it, no instrument; --speed FACTOR: faster",
     setText<&Options::replay>},
    {"--speed", "FACTOR", "", setSpeed},
    {"--quiet", "", "shows errors only", setFlag<&Options::quiet>},
    {"--help", "", "this text; --version: the version", setFlag<&Options::help>},
    {"--version", "", "", setFlag<&Options::version>},
};

const Option& findOption(std::string_view name) {
    const auto* found = std::ranges::find(kOptions, name, &Option::name);
    if (found == std::end(kOptions)) refuse("there is no option " + std::string(name));
    return *found;
}

// Takes the arguments one by one.
class ArgumentReader {
public:
    explicit ArgumentReader(std::span<const std::string> arguments) : rest_(arguments) {}

    Options read() {
        while (!rest_.empty() && !options_.help && !options_.version) {
            const std::string_view argument = take();
            if (!onlyOperands_ && argument == "--") {
                onlyOperands_ = true;
            } else if (!onlyOperands_ && argument.size() > 1 && argument.front() == '-') {
                applyOption(argument);
            } else {
                setScript(argument);
            }
        }
        return std::move(options_);
    }

private:
    std::string_view take() {
        const std::string_view argument = rest_.front();
        rest_ = rest_.subspan(1);
        return argument;
    }

    // option := name [ value | "=" value ]
    void applyOption(std::string_view argument) {
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const Option& option = findOption(name);
        const bool isAgain = std::ranges::find(seen_, name) != seen_.end();
        if (isAgain && !option.repeatable) refuse(std::string(name) + " is given twice");
        seen_.push_back(name);

        std::string_view value;
        if (equals != std::string_view::npos) {
            if (option.parameter.empty()) refuse(std::string(name) + " takes no value");
            value = argument.substr(equals + 1);
        } else if (!option.parameter.empty() && !rest_.empty() && !rest_[0].starts_with("--")) {
            value = take();
        }
        if (value.empty() && !option.parameter.empty()) {
            refuse(std::string(name) + " needs a value: " + std::string(option.parameter));
        }
        option.apply(options_, value);
    }

    void setScript(std::string_view argument) {
        if (onlyOperands_ && !options_.script.empty()) {
            options_.arguments.emplace_back(argument);
            return;
        }
        if (argument.empty()) refuse("the script's name is empty");
        if (!options_.script.empty()) {
            refuse("one script at a time: '" + options_.script + "' or '" + std::string(argument) +
                   "'");
        }
        options_.script = argument;
    }

    std::span<const std::string> rest_;
    std::vector<std::string_view> seen_;
    bool onlyOperands_ = false;
    Options options_;
};

}  // namespace

Options parseOptions(std::span<const std::string> arguments) {
    Options options = ArgumentReader(arguments).read();
    if (options.help || options.version) return options;
    if (options.diagnose) {
        if (!options.script.empty()) refuse("--diagnose runs no script");
        return options;
    }
    if (options.script.empty()) refuse("which script?");
    if (!options.target.port.empty() && !options.target.tcp.empty())
        refuse("--port and --tcp exclude each other");
    if (options.last && (!options.target.port.empty() || !options.target.tcp.empty()))
        refuse("--last and a connection exclude each other");
    if (options.last && (!options.record.empty() || !options.replay.empty()))
        refuse("--last does not go with --record and --replay: name the connection");
    if (!options.application.empty() && !options.last) refuse("--app goes with --last");
    if (!options.record.empty() && !options.replay.empty())
        refuse("--record and --replay exclude each other");
    if (options.json && !options.check) refuse("--json goes with --check");
    if (!options.arguments.empty() && options.hostScript.empty())
        refuse("'" + options.arguments.front() + "' is for a host script: --host");
    return options;
}

std::string connectionText(const Options& options) {
    if (!options.replay.empty()) return "replay of " + options.replay;
    if (options.last) {
        return options.application.empty() ? "the last one"
                                           : "the last one of " + options.application;
    }
    if (!options.target.tcp.empty()) return options.target.tcp;
    if (options.target.port.empty()) return "none";
    return options.target.port + ", " + std::to_string(options.target.baudRate) + " baud";
}

std::string helpText() {
    std::string text = "usage: kelrun SCRIPT [OPTIONS]   (runs an instrument command script)\n";
    for (const Option& option : kOptions) {
        if (option.help.empty()) continue;
        std::string line = "  " + std::string(option.name);
        if (!option.parameter.empty()) line.append(" ").append(option.parameter);
        line.resize(kHelpColumn, ' ');
        text.append(line).append(option.help).append("\n");
    }
    return text +
           "Ctrl+C cancels the script before its next line; again, it ends kelrun at once.\n"
           "Exit codes: 0 the script ran to its end, 1 it failed, 2 wrong usage or file\n"
           "unreadable, 3 no connection, 4 cancelled, 5 a component is not registered.\n";
}

}  // namespace kel::kelrun
