#include "script/engine/clock.h"

#include <gtest/gtest.h>

namespace kel::script {
namespace {

TEST(Clock, TextsOfDateAndTimeHaveFixedWidths) {
    const struct {
        LocalTime time;
        const char* date;
        const char* timeOfDay;
    } rows[] = {{{2004, 3, 9, 7, 5, 9}, "2004/03/09", "07:05:09"},
                {{2024, 12, 31, 23, 59, 59}, "2024/12/31", "23:59:59"},
                {{2025, 1, 1, 0, 0, 0}, "2025/01/01", "00:00:00"},
                {{987, 10, 20, 10, 20, 30}, "0987/10/20", "10:20:30"}};
    for (const auto& row : rows) {
        EXPECT_EQ(dateText(row.time), row.date);
        EXPECT_EQ(timeText(row.time), row.timeOfDay);
    }
}

}  // namespace
}  // namespace kel::script
