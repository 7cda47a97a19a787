#pragma once
// The network address of an instrument.

#include <string>
#include <string_view>

namespace kel::host {

struct Address {
    std::string host;
    std::string port;
};

// Takes HOST:PORT apart; HOST may be a name, a numeric address, or an IPv6 address in brackets;
// a word for the link may stand before a name, as in "gate:HOST".
// Throws Failure (no connection) when it is none.
Address parseAddress(std::string_view text);

}  // namespace kel::host
