#include <gtest/gtest.h>

#include <climits>
#include <limits>

#include "dialogs/service/model/compass_report.h"
#include "dialogs/service/model/compass_scores.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"

namespace kel::service {
namespace {

TEST(CompassScoresTest, AreToldWithTheirRatings) {
    const struct {
        long horizontal;
        long vertical;
        double field;
        ScoreTexts texts;
    } cases[] = {
        {9, 9, 0, {"9 (EXCELLENT)", "9 (EXCELLENT)", "0.00 (EXCELLENT)"}},
        {10, -1, 100, {"0 (VERY POOR)", "0 (VERY POOR)", "100.00 (VERY POOR)"}},
        {8, 7, 55, {"8 (GOOD)", "7 (FAIR)", "55.00 (POOR)"}},
        {6, 5, 95, {"6 (FAIR)", "5 (POOR)", "95.00 (VERY POOR)"}},
        {3, 2, 5, {"3 (POOR)", "2 (VERY POOR)", "5.00 (EXCELLENT)"}},
        {0, 1, 12.345, {"0 (VERY POOR)", "1 (VERY POOR)", "12.35 (GOOD)"}},
        {LONG_MAX, LONG_MIN, 1000, {"0 (VERY POOR)", "0 (VERY POOR)", "1000.00 (VERY POOR)"}},
    };
    for (const auto& row : cases)
        EXPECT_EQ(scoreTexts(acceptedScores(row.horizontal, row.vertical, row.field)), row.texts);
    EXPECT_EQ(shownScores({"1", "2", "3"}),
              "Horizontal calibration score (0-9):\t        1\n"
              "Vertical calibration score (0-9):           2\n"
              "Ambient magnetic field strength (0-100): 3");
}

TEST(CompassScoresTest, AnyFieldHasAnIndexAndARating) {
    // From 0 to 100 in tens: the same in every build, whatever its arithmetic makes of a tenth.
    const int expected[] = {9, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    for (int i = 0; i <= 10; ++i)
        EXPECT_EQ(fieldIndex(10 * i), expected[i]) << i;
    EXPECT_EQ(fieldIndex(109.9), 0);
    EXPECT_EQ(fieldIndex(110), -1);
    EXPECT_EQ(fieldIndex(-1e300), 9);
    for (const double field : {110.0, 1e300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_LT(fieldIndex(field), 0);
        EXPECT_STREQ(rating(fieldIndex(field)), "VERY POOR");
    }
}

TEST(CompassReportTest, HoldsWhatBelongsToACalibration) {
    const ReadingTexts reading{"10.0", "2.5", "-3.0"};
    const test::TemporaryFile file;
    {
        CompassReport report;
        report.open(file.path());
        report.addReading(reading);
        report.endCalibration();
        report.beginCalibration();
        report.endCalibration();
        report.addReading(reading);
        report.addParagraph("Error obtaining scores!");
        // Ended by the compass, and the next one by nobody.
        report.beginCalibration();
        report.beginCalibration();
        report.addReading(reading);
    }
    const auto expected = test::projectFile("tests/core/service/compass_reports/several.html");
    EXPECT_EQ(file.bytes(), test::asTextFile(test::TemporaryFile::bytesOf(expected)));
}

}  // namespace
}  // namespace kel::service
