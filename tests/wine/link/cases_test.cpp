#include "tests/wine/link/link_case.h"

namespace kel::bench::test {
namespace {

TEST_P(LinkCase, ShowsWhatIsExpected) {
    const auto& steps = GetParam().steps;
    make(steps.front().settings);
    for (const kel::test::Step& step : steps) {
        std::string shown;
        for (const std::string& line : step.lines)
            shown += play(line);
        EXPECT_EQ(shown, step.expected) << "line " << step.line;
    }
}

INSTANTIATE_TEST_SUITE_P(Link, LinkCase,
                         testing::ValuesIn(kel::test::readCases("tests/wine/link/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::bench::test
