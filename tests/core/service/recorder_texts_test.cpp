// What the recorder dialog shows of times and files.
#include "dialogs/service/model/recorder_texts.h"

#include <gtest/gtest.h>

namespace kel::service {
namespace {

TEST(RecorderTexts, RemainingTimeWrapsAtThirtyTwoBits) {
    const struct {
        std::uint32_t elapsed, done, total;
        const wchar_t* text;
    } rows[] = {
        {0, 0, 0, L"00:00:00"},
        {10'000, 500, 1000, L"00:00:10"},
        {10'000, 1000, 1000, L"00:00:00"},
        {1'999, 1, 2, L"00:00:01"},  // whole seconds
        // Nothing done counts as one byte.
        {1'000, 0, 100, L"00:01:39"},
        {1'000, 1, 4'294'967, L"1193:02:46"},
        // The product is 1408 more than 2^33.
        {2'000, 1, 4'294'968, L"00:00:00"},
        {100'000, 3, 200'000, L"261:05:43"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(remainingTimeText(row.elapsed, row.done, row.total),
                  std::wstring(L"Remaining time : ") + row.text);
}

TEST(RecorderTexts, AreFilledWithZeros) {
    EXPECT_EQ(doneText(0), L"Done : 00:00:00");
    EXPECT_EQ(doneText(3'600'000 + 23 * 60'000 + 4'999), L"Done : 01:23:04");
    EXPECT_EQ(doneText(0xffffffff), L"Done : 1193:02:47");
    EXPECT_EQ(fileDateText(987, 3, 9), L"03/09/0987");
    EXPECT_EQ(fileDateText(2003, 12, 31), L"12/31/2003");
    EXPECT_EQ(fileTimeText(7, 5), L"07:05");
}

TEST(RecorderTexts, AFolderEndsWithOneBackslash) {
    EXPECT_EQ(asFolder(L"C:\\Data"), L"C:\\Data\\");
    EXPECT_EQ(asFolder(L"C:\\"), L"C:\\");
    EXPECT_EQ(asFolder(L""), L"\\");
}

}  // namespace
}  // namespace kel::service
