#include "hosts/trace/lanes.h"

#include <algorithm>

namespace kel::trace {

std::int64_t Lanes::here() const {
    const std::lock_guard lock(mutex_);
    const auto user = users_.find(thread());
    return user == users_.end() ? 0 : user->second.lane;
}

void Lanes::enter() {
    if (thread() == 0) return;
    const std::lock_guard lock(mutex_);
    User& user = users_[thread()];
    if (user.depth++ > 0) return;
    const auto isTaken = [&](std::int64_t lane) {
        return std::ranges::any_of(users_, [&](const auto& each) {
            return &each.second != &user && each.second.lane == lane;
        });
    };
    user.lane = 1;
    while (isTaken(user.lane))
        ++user.lane;
}

void Lanes::leave() {
    if (thread() == 0) return;
    const std::lock_guard lock(mutex_);
    const auto user = users_.find(thread());
    if (--user->second.depth == 0) users_.erase(user);
}

}  // namespace kel::trace
