#pragma once
// Which kind of session is offered first.

#include <cstdint>
#include <optional>

namespace kel::connect {

// The numbers are those that are remembered.
enum class SessionOption : std::uint32_t { Serial = 211, Network = 212, File = 213 };

// What the link is connected with already.
enum class PresentPort { None, OpenSerial, Network };

// What is remembered of the last session; nothing where there was none.
struct RememberedSession {
    std::optional<std::uint32_t> option;
    std::optional<std::uint32_t> lastConnection;
};

// A number that is none of the options stands for the serial one, and so does the file where files
// are not offered.
SessionOption firstOption(PresentPort port, const RememberedSession& remembered, bool offersFiles);

// Whether a connection is made without the user: not for a file, nor for an unknown number.
bool connectsAtOnce(PresentPort port, const RememberedSession& remembered);

// What is to be remembered after a success. A file leaves the last connection as it was.
RememberedSession remember(SessionOption option);

}  // namespace kel::connect
