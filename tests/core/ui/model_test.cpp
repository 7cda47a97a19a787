#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>

#include "ui/model/formats.h"
#include "ui/model/placement.h"
#include "ui/model/recent_paths.h"
#include "ui/model/scrolling.h"

namespace kel::ui {

// For the messages of failing tests.
void PrintTo(const Rectangle& place, std::ostream* stream) {
    *stream << place.left << ',' << place.top << ' ' << place.width() << 'x' << place.height();
}

namespace {

TEST(PlacementTest, StandsOverItsOwnerInsideTheWorkArea) {
    constexpr Rectangle kWorkArea{0, 30, 1000, 730};
    const struct {
        Rectangle window;
        Rectangle over;
        Rectangle expected;
    } cases[] = {
        {{0, 0, 200, 100}, {400, 300, 600, 500}, {400, 350, 600, 450}},
        {{50, 50, 250, 150}, kWorkArea, {400, 330, 600, 430}},
        {{0, 0, 200, 100}, {900, 700, 1100, 900}, {800, 630, 1000, 730}},
        {{0, 0, 200, 100}, {-300, -300, 0, 0}, {0, 30, 200, 130}},
        {{0, 0, 1200, 900}, {400, 300, 600, 500}, {0, 30, 1200, 930}},
    };
    for (const auto& row : cases)
        EXPECT_EQ(centred(row.window, row.over, kWorkArea), row.expected);
}

TEST(ScrollingTest, ShowsARowAndLeavesNoRoomEmpty) {
    const Scrolling scrolling{50, 20, 10};
    EXPECT_EQ(scrolling.to(-3), 0);
    EXPECT_EQ(scrolling.to(31), 30);
    EXPECT_EQ(scrolling.showing(9), 9);
    EXPECT_EQ(scrolling.showing(29), 10);
    EXPECT_EQ(scrolling.showing(30), 11);
    EXPECT_EQ(scrolling.showing(49), 30);
}

TEST(FormatsTest, SizesAreInTheirLargestUnit) {
    const struct {
        std::int64_t bytes;
        const char* text;
    } cases[] = {
        {-1, "-1 b"},
        {0, "0 b"},
        {1023, "1023 b"},
        {1024, " 1.0 kB"},
        {10240, "10.0 kB"},
        {1048575, "1024.0 kB"},
        {1048576, "1.00 MB"},
        {1073741823, "1024.00 MB"},
        {1073741824, "1.00 GB"},
        {INT64_C(1) << 32, "4.00 GB"},
        {INT64_MAX, "8589934592.00 GB"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(sizeText(row.bytes), row.text);
}

TEST(FormatsTest, DecimalsAreRoundedAndFilled) {
    EXPECT_EQ(decimalText(10.0 * kPsiPerDecibar, 1), "14.5");
    EXPECT_EQ(decimalText(-0.25, 1), "-0.2");
    EXPECT_EQ(decimalText(3.14159, 3, 7), "  3.142");
    EXPECT_EQ(decimalText(1e300, 0).size(), 301u);
}

bool isSameAscii(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right, {}, ::towlower, ::towlower);
}

TEST(RecentPaths, NewestFirstNoneTwiceTenAtMost) {
    RecentPaths recent(isSameAscii, {L"C:\\a.txt", L"c:\\A.TXT", L"", L"C:\\b.txt"});
    EXPECT_EQ(recent.paths(), (std::vector<std::wstring>{L"C:\\a.txt", L"C:\\b.txt"}));
    recent.add(L"C:\\B.txt");
    EXPECT_EQ(recent.paths(), (std::vector<std::wstring>{L"C:\\B.txt", L"C:\\a.txt"}));
    recent.remove(L"C:\\A.txt");
    EXPECT_EQ(recent.paths().size(), 1u);
    for (int i = 0; i < 20; ++i)
        recent.add(std::to_wstring(i));
    EXPECT_EQ(recent.paths().size(), 10u);
    EXPECT_EQ(recent.paths().front(), L"19");
}

}  // namespace
}  // namespace kel::ui
