#pragma once
// What a host tells of the line that runs.

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kel::host {

// A wait that the line asks for.
struct Wait {
    std::wstring what;         // "waiting for OK"
    long seconds = 0;          // how long it may take; 0 where nobody knows
    bool endsEarlier = false;  // when the instrument answers
};

// A line that has run for less is not worth a word on how long it takes.
inline constexpr std::chrono::seconds kWorthTelling{2};

// The script's name and the line; for a wait what is waited for and how long it still takes; where
// that is unknown, from kWorthTelling on how long the line has run.
std::wstring lineStatus(std::wstring_view path, std::size_t line, std::chrono::seconds elapsed,
                        const std::optional<Wait>& wait);

}  // namespace kel::host
