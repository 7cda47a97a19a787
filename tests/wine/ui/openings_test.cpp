// Every window of the library, opened again and again.
#include <gtest/gtest.h>

#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/resource_counts.h"
#include "tests/wine/support/scene.h"

namespace kel::test {
namespace {

class OpeningsTest : public testing::TestWithParam<Scene> {};

TEST_P(OpeningsTest, LeaveNothingBehind) {
    expectNothingLeft([] {
        play(GetParam(),
             [](HWND window) { EXPECT_EQ(faultsOf(window), std::vector<std::string>()); });
    });
}

INSTANTIATE_TEST_SUITE_P(Windows, OpeningsTest, testing::ValuesIn(readOpenings()));

}  // namespace
}  // namespace kel::test
