#pragma once
// The lanes of a session: in each of them calls nest.

#include <windows.h>

#include <cstdint>
#include <map>
#include <mutex>

namespace kel::trace {

// Lane 0 is that of the thread that made the session. Every other thread takes the first free one
// when it enters from outside, and leaves it with its last call.
class Lanes {
public:
    class Stay {
    public:
        explicit Stay(Lanes& lanes) : lanes_(lanes) { lanes_.enter(); }
        ~Stay() { lanes_.leave(); }
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;

    private:
        Lanes& lanes_;
    };

    // The calling thread's.
    std::int64_t here() const;
    // 0 for the session's thread, else what tells threads apart as long as they live.
    std::uint32_t thread() const {
        return GetCurrentThreadId() == home_ ? 0 : GetCurrentThreadId();
    }

private:
    void enter();
    void leave();

    struct User {
        std::int64_t lane = 0;
        int depth = 0;
    };

    const DWORD home_ = GetCurrentThreadId();
    mutable std::mutex mutex_;
    std::map<DWORD, User> users_;
};

}  // namespace kel::trace
