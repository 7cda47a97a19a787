#include "terminal/model/command_history.h"

#include <algorithm>

#include "terminal/model/letter_case.h"

namespace kel::terminal {
namespace {

constexpr std::size_t kMostEntries = 100;

bool beginsWith(std::wstring_view entry, std::wstring_view start) {
    return entry.size() >= start.size() &&
           std::equal(start.begin(), start.end(), entry.begin(),
                      [](wchar_t one, wchar_t other) { return folded(one) == folded(other); });
}

}  // namespace

void CommandHistory::add(std::wstring_view command) {
    if (command.empty()) return;
    auto place = std::find(entries_.begin(), entries_.end(), command);
    if (place == entries_.end()) {
        if (entries_.size() < kMostEntries) {
            entries_.emplace_back(command);
        } else {
            entries_.back() = command;
        }
        place = entries_.end() - 1;
    }
    std::rotate(entries_.begin(), place, place + 1);
}

const std::wstring* CommandHistory::older(std::wstring_view present) const {
    return step(present, 1);
}

const std::wstring* CommandHistory::newer(std::wstring_view present) const {
    return step(present, entries_.size() - 1);
}

const std::wstring* CommandHistory::step(std::wstring_view present, std::size_t forward) const {
    if (entries_.empty()) return nullptr;
    // Entries are never empty, so an empty line is none of them and the start of all.
    const auto same = std::find(entries_.begin(), entries_.end(), present);
    if (same != entries_.end()) {
        const auto index = static_cast<std::size_t>(same - entries_.begin());
        return &entries_[(index + forward) % entries_.size()];
    }
    const auto similar =
        std::find_if(entries_.begin(), entries_.end(),
                     [&](const std::wstring& entry) { return beginsWith(entry, present); });
    return similar != entries_.end() ? &*similar : &entries_.front();
}

}  // namespace kel::terminal
