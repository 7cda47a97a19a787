// Every window of the library, opened again and again.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/resource_counts.h"
#include "tests/wine/support/scene.h"

namespace kel::test {
namespace {

// The platform keeps some of what it makes for the first windows.
constexpr int kFirstOnes = 4;

// More of them where somebody has the time.
int rounds() {
    const char* wanted = std::getenv("KEL_OPENING_ROUNDS");
    return wanted ? std::atoi(wanted) : 20;
}

class OpeningsTest : public testing::TestWithParam<Scene> {};

TEST_P(OpeningsTest, LeaveNothingBehind) {
    const auto openTimes = [](int times) {
        for (int i = 0; i < times; ++i) {
            play(GetParam(),
                 [](HWND window) { EXPECT_EQ(faultsOf(window), std::vector<std::string>()); });
        }
    };
    openTimes(kFirstOnes);
    // A device context more in the platform's store, because two threads wanted one at a time, is
    // no leak; what grows every time is.
    ResourceCounts before, after;
    for (int attempt = 0; attempt < 3; ++attempt) {
        before = countResources();
        openTimes(rounds());
        after = countResources();
        if (after == before) return;
    }
    EXPECT_EQ(after, before);
}

INSTANTIATE_TEST_SUITE_P(Windows, OpeningsTest, testing::ValuesIn(readOpenings()));

}  // namespace
}  // namespace kel::test
