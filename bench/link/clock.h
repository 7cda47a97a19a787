#pragma once
// The one place where the link's time is measured and can be made to run faster.
//
// The environment variable KEL_BENCH_TIME_SCALE holds a factor above zero, read when an object is
// made: at 100, Sleep(250) lasts 2.5 ms and every time-out and break is a hundred times shorter.
// Anything else in it counts as 1.

#include <chrono>

namespace kel::bench {

class Clock {
public:
    using Moment = std::chrono::steady_clock::time_point;

    Clock();

    // The moment that is a number of the link's milliseconds from now.
    Moment after(long milliseconds) const;

    // The link's milliseconds until a moment, rounded up; 0 when it has passed.
    long until(Moment moment) const;

private:
    double scale_;
};

inline bool hasPassed(Clock::Moment moment) {
    return std::chrono::steady_clock::now() >= moment;
}

}  // namespace kel::bench
