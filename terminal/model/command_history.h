#pragma once
// The commands that a user has sent, to be fetched back.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kel::terminal {

// Keeps the last hundred commands, the newest first and none twice.
class CommandHistory {
public:
    // An empty command is not kept.
    void add(std::wstring_view command);

    // What stands in the command line after a step from what stands there now: the next older or
    // newer entry, around the ends; from a text that is no entry, the newest one that begins with
    // it, in any case, else the newest of all. Null while there are none; valid until the next add.
    const std::wstring* older(std::wstring_view present) const;
    const std::wstring* newer(std::wstring_view present) const;

    const std::vector<std::wstring>& entries() const { return entries_; }

private:
    const std::wstring* step(std::wstring_view present, std::size_t forward) const;

    std::vector<std::wstring> entries_;
};

}  // namespace kel::terminal
