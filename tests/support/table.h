#pragma once
// Cases whose lines tell something.

#include <gtest/gtest.h>

#include "tests/support/cases.h"

namespace kel::test {

// Plays the lines of a case, one after the other, and compares with what each step expects.
// `play` gives what a line tells, with its ends.
template <class Play>
void playTable(const Case& table, Play&& play) {
    for (const Step& step : table.steps) {
        SCOPED_TRACE("line " + std::to_string(step.line));
        std::string told;
        for (const std::string& line : step.lines)
            told += play(line);
        EXPECT_EQ(told, step.expected);
    }
}

}  // namespace kel::test
