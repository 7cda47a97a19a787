#include "hosts/keldesk/model/desk_options.h"

#include <charconv>

#include "hosts/shared/model/failure.h"

namespace kel::keldesk {
namespace {

[[noreturn]] void refuse(const std::string& text) {
    throw host::Failure(host::ExitCode::kUsage,
                        text +
                            "\n\nkeldesk [--link PROGID] [--port NAME [--baud RATE] | "
                            "--tcp HOST:PORT] [SCRIPT]");
}

long rateOf(const std::string& text) {
    long rate = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rate);
    if (error != std::errc() || end != text.data() + text.size() || rate < 1)
        refuse("--baud: '" + text + "' is no rate");
    return rate;
}

}  // namespace

DeskOptions parseDeskOptions(std::span<const std::string> arguments) {
    DeskOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& option = arguments[i];
        if (!option.starts_with("-")) {
            if (!options.script.empty()) refuse("one script at a time");
            options.script = option;
            continue;
        }
        const bool isKnown =
            option == "--port" || option == "--tcp" || option == "--baud" || option == "--link";
        if (!isKnown) refuse("there is no option " + option);
        if (++i == arguments.size()) refuse(option + " needs a value");
        const std::string& value = arguments[i];
        if (option == "--port") options.target.port = value;
        if (option == "--tcp") options.target.tcp = value;
        if (option == "--baud") options.target.baudRate = rateOf(value);
        if (option == "--link") options.link = value;
    }
    if (!options.target.port.empty() && !options.target.tcp.empty())
        refuse("--port or --tcp, not both");
    return options;
}

std::string nameOf(const host::Target& target) {
    return target.tcp.empty() ? target.port : target.tcp;
}

}  // namespace kel::keldesk
