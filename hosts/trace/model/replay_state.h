#pragma once
// What the lanes of a replay have in common.

#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "hosts/trace/model/event.h"

namespace kel::trace {

// Thrown by the first call that differs from the recording, and by all later ones.
class Difference : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Any thread.
class ReplayState {
public:
    // Empty while there is none.
    std::string difference() const;
    bool isDifferent() const { return !difference().empty(); }
    void stopIfDifferent() const;
    // The first difference stays.
    [[noreturn]] void leave(std::string difference);

    // Where in a script the host is.
    Position position() const;
    void setPosition(const Position& position);

    // What the end of a call tells of later questions.
    void remember(const CallStarted& call, const CallEnded& end);
    std::optional<CallEnded> known(const Call& question) const;

private:
    mutable std::mutex mutex_;
    std::string difference_;
    Position position_;
    // Last known answers, by object and method.
    std::map<std::string, CallEnded, std::less<>> known_;
};

}  // namespace kel::trace
