#include <gtest/gtest.h>

#include "dialogs/service/model/compass_report.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"

namespace kel::service {
namespace {

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
