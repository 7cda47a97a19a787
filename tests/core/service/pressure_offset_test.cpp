#include "dialogs/service/model/pressure_offset.h"

#include <gtest/gtest.h>

namespace kel::service {
namespace {

TEST(PressureOffsetTest, PsiIsForTheDisplayOnly) {
    EXPECT_EQ(shownPressure(10, false), "14.5");
    EXPECT_EQ(shownPressure(10, true), "10.0");
    EXPECT_EQ(shownPressure(-0.26, true), "-0.3");
}

TEST(PressureOffsetTest, TheCommandTakesTheMeanFromTheOffset) {
    EXPECT_EQ(offsetCommand(0.25, 1.5), "pressoffset set  -1.250");
    EXPECT_EQ(offsetCommand(0, 0), "pressoffset set   0.000");
    EXPECT_EQ(offsetCommand(10, -12345.25), "pressoffset set 12355.250");
}

}  // namespace
}  // namespace kel::service
