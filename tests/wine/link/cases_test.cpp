#include "tests/wine/link/link_case.h"

namespace kel::bench::test {
namespace {

TEST_P(LinkCase, ShowsWhatIsExpected) {
    make();
    playSteps();
}

INSTANTIATE_TEST_SUITE_P(Link, LinkCase,
                         testing::ValuesIn(kel::test::readCases("tests/wine/link/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::bench::test
