// Script after script on the bench's link, beside a terminal: what a host does that is never ended.
#include <chrono>
#include <cstdlib>

#include "tests/wine/link/access_test.h"
#include "tests/wine/service/live_terminal.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/resource_counts.h"

namespace kel::test {
namespace {

constexpr wchar_t kScript[] =
    L"#WAKEUP\n@station=\"B14\"\nset station %station\nset interval 60\n"
    L"#IF %station == \"B14\"\nshow\n#ELSE\ndefaults\n#ENDIF\n#WAIT 1\nclock\n#WAIT_PROMPT 60\n"
    L"@number=SERIALNUMBER()\n";
constexpr int kFirstOnes = 20;
constexpr int kRound = 10;

using LongRunTest = bench::test::AccessTest;

// A few runs, and minutes of them where somebody has the time. What grows with every run is a leak;
// a block that the platform keeps once is none.
TEST_F(LongRunTest, GrowsNothing) {
    const char* wanted = std::getenv("KEL_SOAK_MINUTES");
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::minutes(wanted ? std::atoi(wanted) : 0);
    connect({}, 50, L"10");
    LiveTerminal terminal(link.Get());
    terminal.limit(2'000);
    const auto preprocessor = kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
    com::check(preprocessor->put_Communicator(link.Get()));
    com::check(link->put_Preprocessor(preprocessor.Get()));
    const com::Bstr script{std::wstring_view(kScript)};
    const auto run = [&] {
        VARIANT_BOOL ran = VARIANT_FALSE;
        ASSERT_EQ(preprocessor->PreprocessAndRun(script.get(), &ran), S_OK);
        ASSERT_EQ(ran, VARIANT_TRUE) << call(preprocessor.Get(), "LastErrorLine") << ": "
                                     << call(preprocessor.Get(), "LastErrorDescription");
    };
    int runs = 0;
    for (; runs < kFirstOnes; ++runs)
        run();
    const ResourceCounts before = countResources();
    ResourceCounts after = before;
    std::size_t least = before.memory;
    do {
        least = SIZE_MAX;
        for (int i = 0; i < kRound; ++i, ++runs) {
            run();
            after = countResources();
            least = std::min(least, after.memory);
        }
    } while (std::chrono::steady_clock::now() < end && !HasFailure());
    com::check(link->put_Preprocessor(nullptr));
    com::check(preprocessor->put_Communicator(nullptr));
    if (wanted) {
        std::printf("%d runs: %zu bytes before, %zu at the least after; %zu and %zu handles\n",
                    runs, before.memory, least, before.handles, after.handles);
    }
    EXPECT_LE(least, before.memory + 64 * 1024);
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_EQ(after.graphicsObjects, before.graphicsObjects);
    EXPECT_LE(after.handles, before.handles + 2);
}

}  // namespace
}  // namespace kel::test
