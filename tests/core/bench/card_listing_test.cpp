#include "bench/link/model/card_listing.h"

#include <gtest/gtest.h>

#include "bench/link/model/file_name.h"

namespace kel::bench {
namespace {

TEST(CardListing, ALineIsAFileOrRefused) {
    const auto entry = cardEntry("17 5368709120 2024/01/31 23:59:58 A file.DAT");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->number, 17);
    EXPECT_EQ(entry->size, 5'368'709'120);
    const int time[] = {entry->year, entry->month,  entry->day,
                        entry->hour, entry->minute, entry->second};
    const int expected[] = {2024, 1, 31, 23, 59, 58};
    EXPECT_TRUE(std::equal(std::begin(time), std::end(time), std::begin(expected)));
    EXPECT_EQ(entry->name, "A file.DAT");
    for (const char* line :
         {"", "17", "17 1 2024/01/31 23:59:58", "17 1 2024/01/31 23:59:58 ",
          "-1 1 2024/01/31 23:59:58 x", "17 -1 2024/01/31 23:59:58 x", "17 1 2024-01-31 23:59:58 x",
          "17 1 2024/1/31 23:59:58 x", "17 1 2024/01/31 23:59 x", "17 1 2024/-1/31 23:59:58 x",
          "x 1 2024/01/31 23:59:58 x"}) {
        EXPECT_FALSE(cardEntry(line)) << line;
    }
}

TEST(CardListing, ProgressFitsIn32Bits) {
    const struct {
        std::int64_t done, total;
        std::int32_t shownDone, shownTotal;
    } rows[] = {{0, 0, 0, 0},
                {5, 2147483647, 5, 2147483647},
                {2147483648, 2147483648, 1073741824, 1073741824},
                {5368709120, 10737418240, 671088640, 1342177280}};
    for (const auto& row : rows) {
        const Progress progress = progressOf(row.done, row.total);
        EXPECT_EQ(progress.done, row.shownDone) << row.done;
        EXPECT_EQ(progress.total, row.shownTotal) << row.total;
    }
}

TEST(CardListing, NamesStayInTheirFolder) {
    for (const char* name : {"DAY001.DAT", "a", ".hidden", "with blank.txt", "CONSOLE", "COM",
                             "COM12", "lpt", "x.con", "nul_", "\xE4.dat"}) {
        EXPECT_TRUE(isFileName(name)) << name;
    }
    for (const char* name :
         {"",         ".",      "..",      "..\\x", "../x",  "a/b",      "a\\b", "C:x",
          "x:stream", "con",    "Con.txt", "NUL",   "aux.",  "prn .dat", "LPT1", "com9.x.y",
          "COM\xB9",  "conin$", "CONOUT$", "a.",    "a ",    "a*",       "a?",   "<a",
          "a>",       "a|b",    "\"a\"",   "a\tb",  "a\x7F", "a\nb"}) {
        EXPECT_FALSE(isFileName(name)) << name;
    }
    EXPECT_TRUE(isFileName(std::string(255, 'n')));
    EXPECT_FALSE(isFileName(std::string(256, 'n')));
    EXPECT_FALSE(isFileName(std::string("a\0b", 3)));
}

}  // namespace
}  // namespace kel::bench
