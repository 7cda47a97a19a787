#pragma once
// The time of day, as scripts are told it.

#include <string>

namespace kel::script {

// A moment by the calendar and clock of the user's place.
struct LocalTime {
    int year = 0;
    int month = 0;  // from 1
    int day = 0;    // from 1
    int hour = 0;   // 0 to 23
    int minute = 0;
    int second = 0;
};

// "2004/03/09"
std::string dateText(const LocalTime& time);

// "07:05:09"
std::string timeText(const LocalTime& time);

class Clock {
public:
    virtual ~Clock() = default;

    virtual LocalTime localTime() = 0;
};

}  // namespace kel::script
