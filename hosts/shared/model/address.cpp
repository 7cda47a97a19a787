#include "hosts/shared/model/address.h"

#include <algorithm>
#include <charconv>

#include "hosts/shared/model/failure.h"

namespace kel::host {
namespace {

constexpr unsigned kHighestPort = 65535;

bool isPort(std::string_view text) {
    unsigned port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port >= 1 &&
           port <= kHighestPort;
}

// "gate:HOST": what a link is told before a host. The digits of an IPv6 address are no such word.
std::string_view withoutWord(std::string_view host) {
    const auto colon = host.find(':');
    if (colon == std::string_view::npos) return host;
    const std::string_view word = host.substr(0, colon);
    const bool isWord = !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    });
    return isWord ? host.substr(colon + 1) : host;
}

bool isBracketed(std::string_view host) {
    return host.size() > 2 && host.front() == '[' && host.back() == ']';
}

}  // namespace

Address parseAddress(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon != std::string_view::npos && isPort(text.substr(colon + 1))) {
        const std::string_view host = text.substr(0, colon);
        const std::string port(text.substr(colon + 1));
        if (isBracketed(host)) return {std::string(host.substr(1, host.size() - 2)), port};
        const std::string_view name = withoutWord(host);
        if (!name.empty() && name.find_first_of(":[] ") == std::string_view::npos) {
            return {std::string(host), port};
        }
    }
    throw Failure(ExitCode::kNoConnection,
                  "no connection: '" + std::string(text) + "' is not HOST:PORT (port 1 to 65535)");
}

}  // namespace kel::host
