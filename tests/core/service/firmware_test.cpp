// What the firmware upload decides without a window.
#include <gtest/gtest.h>

#include "dialogs/service/model/firmware_file.h"
#include "dialogs/service/model/transfer_progress.h"

namespace kel::service {
namespace {

using std::chrono::milliseconds;

TEST(FirmwareFile, ItsPathTellsWhatGoesWithIt) {
    const struct {
        const wchar_t* path;
        const wchar_t* name;
        bool isPackage;
        const wchar_t* companion;
    } rows[] = {
        {L"C:\\fw\\new.hex", L"new.hex", false, L"C:\\fw\\new.kfc"},
        {L"C:\\fw\\new.KfH", L"new.KfH", true, L""},
        {L"C:/fw/new.v2.bin", L"new.v2.bin", false, L"C:/fw/new.v2.kfc"},
        {L"C:\\fw.kfh\\new", L"new", false, L""},
        {L"C:\\fw/v.2\\new.", L"new.", false, L""},
        {L"new.kfhx", L"new.kfhx", false, L"new.kfc"},
        {L"kfh", L"kfh", false, L""},
        {L"C:\\fw\\", L"", false, L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(firmwareName(row.path), row.name);
        EXPECT_EQ(isFirmwarePackage(row.path), row.isPackage) << row.name;
        EXPECT_EQ(firmwareCompanion(row.path), row.companion);
    }
}

TEST(FirmwareFile, AccessCodesAreWholeNumbers) {
    const std::pair<const wchar_t*, std::int32_t> codes[] = {{L"", 0},
                                                             {L" ", 0},
                                                             {L" 42\t", 42},
                                                             {L"+7", 7},
                                                             {L"-17", -17},
                                                             {L"2147483647", 2147483647},
                                                             {L"-2147483648", INT32_MIN}};
    for (const auto& [text, code] : codes)
        EXPECT_EQ(parseAccessCode(text), code) << testing::PrintToString(text);
    for (const wchar_t* const text : {L"2147483648", L"-2147483649", L"99999999999999999999999",
                                      L"-", L"--1", L"1 2", L"12a", L"0x10"})
        EXPECT_FALSE(parseAccessCode(text)) << testing::PrintToString(text);
}

TEST(TransferProgress, TellsTheTimeThatRemains) {
    TransferProgress progress;
    progress.begin(L"Loading");
    const struct {
        std::int64_t done;
        std::int64_t total;
        int time;
        int position;
        const wchar_t* line;
    } rows[] = {
        {0, 0, 0, 0, L"Loading"},
        {1000, 101000, 5000, 9, L"Loading"},
        {1500, 101000, 5999, 14, L"Loading"},
        {2000, 101000, 6000, 19, L"Loading, 1:39 remaining"},
        {26000, 101000, 30001, 257, L"Loading, 1:16 remaining"},
        {100999, 101000, 105000, 999, L"Loading, 0:01 remaining"},
        {101000, 101000, 105001, 1000, L"Loading"},
        // Begun anew, or something else.
        {500, 101000, 106000, 4, L"Loading"},
        {500, 101000, 109000, 4, L"Loading"},
        {1000, 101000, 109000, 9, L"Loading, 10:00 remaining"},
        {1000, 2000, 120000, 500, L"Loading"},
        {-5, 2000, 130000, 0, L"Loading"},
        {3000, 2000, 140000, 1000, L"Loading"},
        {1, -1, 150000, 0, L"Loading"},
        {0, 2147483647, 150000, 0, L"Loading"},
        {2147483646, 2147483647, 86550000, 999, L"Loading, 0:01 remaining"},
    };
    for (const auto& row : rows) {
        progress.advance(row.done, row.total, milliseconds(row.time));
        EXPECT_EQ(progress.line(), row.line) << row.time;
        EXPECT_EQ(progress.position(), row.position) << row.time;
    }
}

TEST(TransferProgress, EndsWithWhatWasToldLast) {
    TransferProgress progress;
    progress.begin(L"Loading");
    progress.refuse(L"Not now");
    EXPECT_EQ(progress.line(), L"Not now");
    EXPECT_EQ(progress.lastLine(L"Not loaded"), L"Not loaded");
    progress.tell(L"Block 2");
    progress.refuse(L"Not now");
    EXPECT_EQ(progress.lastLine(L"Not loaded"), L"Block 2");
    progress.tell(L"Refused");
    EXPECT_EQ(progress.line(), L"Refused");
    progress.begin(L"Verifying");
    EXPECT_EQ(progress.lastLine(L"Different"), L"Different");
}

}  // namespace
}  // namespace kel::service
