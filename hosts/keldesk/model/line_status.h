#pragma once
// What the status bar tells of the line that runs.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kel::keldesk {

// A wait that the line asks for.
struct Wait {
    long seconds = 0;
    bool mayEndEarlier = false;  // when the instrument answers
};

// The script's name, the line, and how long a wait still takes or, from the second second on, how
// long the line has run. `elapsed` is in seconds.
std::wstring lineStatus(std::wstring_view path, std::size_t line, long elapsed,
                        const std::optional<Wait>& wait);

}  // namespace kel::keldesk
