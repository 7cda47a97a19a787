#pragma once
// The serial ports that are offered, and how each of them is found.

#include <array>
#include <functional>
#include <string>
#include <string_view>

namespace kel::connect {

inline constexpr int kPorts = 8;
inline constexpr long kBaudRates[] = {300,  600,   1200,  2400,  4800,
                                      9600, 19200, 38400, 57600, 115200};
inline constexpr long kDefaultBaudRate = 9600;

enum class PortState { Absent, Free, Selected, Busy };

// "COM3"; numbers count from 1.
std::wstring portName(int number);

// The name as it is shown: without the colon that may end it.
std::wstring shownName(std::wstring_view name);
// The name as ports are opened: with a colon.
std::wstring openedName(std::wstring_view name);

// Without regard to colon and case.
bool isSamePort(std::wstring_view left, std::wstring_view right);

// How the ports are looked at; each is asked by its name as it is shown. May throw.
struct PortProbe {
    std::function<bool(const std::wstring& name)> exists;
    std::function<bool(const std::wstring& name)> opens;
};

// Looks at every port but the current one, in order. Where none is current, the first free one
// becomes it.
std::array<PortState, kPorts> probePorts(std::wstring& current, const PortProbe& probe);

// What a button is called: "Com3, busy".
std::wstring buttonText(int number, PortState state);

// The rate of the list that a text names, or else the default.
long listedRate(std::string_view text);

}  // namespace kel::connect
