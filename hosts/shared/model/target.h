#pragma once
// Where an instrument is, as the user names it.

#include <string>

namespace kel::host {

// Texts are UTF-8.
struct Target {
    std::string port;  // empty for none
    long baudRate = 9600;
    std::string tcp;  // HOST:PORT, not yet taken apart; empty for none
};

}  // namespace kel::host
