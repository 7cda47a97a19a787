#include "dialogs/connect/model/session_options.h"

namespace kel::connect {
namespace {

SessionOption optionOf(PresentPort port, const RememberedSession& remembered) {
    if (port == PresentPort::Network) return SessionOption::Network;
    if (port == PresentPort::OpenSerial) return SessionOption::Serial;
    const auto option = static_cast<SessionOption>(remembered.option.value_or(0));
    const bool isKnown = option == SessionOption::Network || option == SessionOption::File;
    return isKnown ? option : SessionOption::Serial;
}

}  // namespace

SessionOption firstOption(PresentPort port, const RememberedSession& remembered, bool offersFiles) {
    const SessionOption option = optionOf(port, remembered);
    return option == SessionOption::File && !offersFiles ? SessionOption::Serial : option;
}

bool connectsAtOnce(PresentPort port, const RememberedSession& remembered) {
    if (port != PresentPort::None || !remembered.option) return true;
    const auto option = static_cast<SessionOption>(*remembered.option);
    return option == SessionOption::Serial || option == SessionOption::Network;
}

RememberedSession remember(SessionOption option) {
    const auto number = static_cast<std::uint32_t>(option);
    if (option == SessionOption::File) return {.option = number, .lastConnection = {}};
    return {.option = number, .lastConnection = number};
}

}  // namespace kel::connect
