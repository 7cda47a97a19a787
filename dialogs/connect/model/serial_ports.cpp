#include "dialogs/connect/model/serial_ports.h"

#include <algorithm>
#include <iterator>

namespace kel::connect {
namespace {

// Names of ports are plain letters and digits.
wchar_t upper(wchar_t character) {
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A')
                                                  : character;
}

}  // namespace

std::wstring portName(int number) {
    return L"COM" + std::to_wstring(number);
}

std::wstring shownName(std::wstring_view name) {
    if (name.ends_with(L':')) name.remove_suffix(1);
    return std::wstring(name);
}

std::wstring openedName(std::wstring_view name) {
    return name.ends_with(L':') ? std::wstring(name) : std::wstring(name) + L':';
}

bool isSamePort(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(shownName(left), shownName(right), {}, upper, upper);
}

std::array<PortState, kPorts> probePorts(std::wstring& current, const PortProbe& probe) {
    std::array<PortState, kPorts> states{};
    for (int number = 1; number <= kPorts; ++number) {
        PortState& state = states[static_cast<std::size_t>(number - 1)];
        const std::wstring name = portName(number);
        if (isSamePort(name, current)) {
            state = PortState::Selected;
        } else if (!probe.exists(name)) {
            state = PortState::Absent;
        } else if (!probe.opens(name)) {
            state = PortState::Busy;
        } else if (current.empty()) {
            current = name;
            state = PortState::Selected;
        } else {
            state = PortState::Free;
        }
    }
    return states;
}

std::wstring buttonText(int number, PortState state) {
    constexpr const wchar_t* kWords[] = {L"absent", L"free", L"selected", L"busy"};
    return L"Com" + std::to_wstring(number) + L", " + kWords[static_cast<int>(state)];
}

long listedRate(std::string_view text) {
    for (const long rate : kBaudRates)
        if (std::to_string(rate) == text) return rate;
    return kDefaultBaudRate;
}

}  // namespace kel::connect
