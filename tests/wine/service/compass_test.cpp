// The compass calibration dialog, from its opening to each of its endings and the report of it.
#include <filesystem>

#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/service/access_fixture.h"
#include "tests/wine/service/fake_compass.h"

namespace kel::test {
namespace {

constexpr char kCompassOpening[] =
    "Link.WakeUpInstrument\nAttach\nEchoWindow\nIdleProcessing\nInitialise\n";
constexpr char kReading[] = "Heading\nPitch\nRoll\n";

class CompassTest : public AccessTest<ICompassCalibDialog2, FakeCompass> {
protected:
    CompassTest()
        : AccessTest(CLSID_CompassCalibDialog, link::kCompassAccessClass, L"Compass calibration",
                     {"Calibrating", "Busy"}) {
        access_->readings = {{359.94, -1.26, 0}, {10.04, 2.5, -3}};
        access_->horizontal = 9;
        access_->vertical = 7;
        access_->field = 12.5;
        EXPECT_EQ(dialog_->put_LogFile(com::Bstr(report_.path().wstring()).get()), S_OK);
    }

    static std::string expectedReport(const char* name) {
        return asTextFile(
            TemporaryFile::bytesOf(projectFile("tests/core/service/compass_reports") / name));
    }
    static std::wstring buttons(DialogDriver& driver) {
        std::wstring letters;
        if (IsWindowEnabled(driver.control(IDC_COMPASS_START))) letters += L's';
        if (IsWindowEnabled(driver.control(IDC_COMPASS_STOP))) letters += L't';
        return letters;
    }
    void calibrate(DialogDriver& driver) {
        access_->readingsRead = 0;
        click(driver, IDC_COMPASS_START);
        for (std::size_t i = 0; i < access_->readings.size(); ++i)
            poll(driver);
    }
    std::string scores() {
        VARIANT_BOOL read = 7;
        long horizontal = -1;
        long vertical = -1;
        double field = -1;
        EXPECT_EQ(dialog_->get_ScoresRead(&read), S_OK);
        EXPECT_EQ(dialog_->get_HorizontalScore(&horizontal), S_OK);
        EXPECT_EQ(dialog_->get_VerticalScore(&vertical), S_OK);
        EXPECT_EQ(dialog_->get_FieldStrength(&field), S_OK);
        return std::to_string(read) + " " + std::to_string(horizontal) + " " +
               std::to_string(vertical) + " " + std::to_string(field);
    }

    TemporaryFile report_;
};

TEST_F(CompassTest, ShowsReadingsAndScoresAndReportsThem) {
    EXPECT_EQ(scores(), "0 0 0 0.000000");
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        EXPECT_EQ(driver.text(IDC_COMPASS_TEXT),
                  L"Compass initialized.\nPress 'Start' to calibrate it!");
        EXPECT_EQ(driver.focus(), driver.control(IDC_COMPASS_START));
        EXPECT_EQ(buttons(driver), L"s");
        driver.key('S', VK_MENU);
        driver.waitUntil("the first readings",
                         [&] { return driver.text(IDC_COMPASS_ROLL) == L"-3.0"; });
        EXPECT_EQ(driver.text(IDC_COMPASS_HEADING), L"10.0");
        EXPECT_EQ(driver.text(IDC_COMPASS_PITCH), L"2.5");
        EXPECT_EQ(driver.text(IDC_COMPASS_TEXT),
                  L"Begin slowly rotating the compass two full turns, varying the pitch and roll "
                  L"as much as possible.\nAllow at least a minute for each turn.\nOnce the "
                  L"calibration is done, press 'Stop' to display the calibration score.");
        EXPECT_EQ(buttons(driver), L"t");
        EXPECT_EQ(driver.focus(), driver.control(IDC_COMPASS_STOP));
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        driver.key('T', VK_MENU);
        driver.waitUntil("stopped", [&] { return buttons(driver) == L"s"; });
        EXPECT_EQ(driver.text(IDC_COMPASS_TEXT),
                  L"Horizontal calibration score (0-9):\t        9 (EXCELLENT)\n"
                  L"Vertical calibration score (0-9):           7 (FAIR)\n"
                  L"Ambient magnetic field strength (0-100): 12.50 (GOOD)");
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        driver.key(VK_ESCAPE);
    }));
    EXPECT_EQ(takeLog(), std::string(kCompassOpening) + "StartCalibration\n" + kReading + kReading +
                             "StopCalibration\nReadScores\n" + kRestoring);
    EXPECT_EQ(report_.bytes(), expectedReport("scores.html"));
    EXPECT_EQ(scores(), "-1 9 7 12.500000");
    show([](DialogDriver& driver) { driver.press(IDCANCEL); });
    EXPECT_EQ(scores(), "0 0 0 0.000000");
}

TEST_F(CompassTest, WithoutScoresItSaysSoAndWithoutALogFileItIsTheSame) {
    access_->hasScores = false;
    access_->readings.resize(1);
    for (const bool isReported : {true, false}) {
        EXPECT_FALSE(show([&](DialogDriver& driver) {
            calibrate(driver);
            click(driver, IDC_COMPASS_STOP);
            EXPECT_EQ(driver.text(IDC_COMPASS_TEXT), L"Error obtaining scores!");
            EXPECT_EQ(buttons(driver), L"s");
            PostMessageW(driver.window(), WM_CLOSE, 0, 0);
        }));
        EXPECT_EQ(takeLog(), kCompassOpening + ("StartCalibration\n" + std::string(kReading)) +
                                 "StopCalibration\nReadScores\n" + kRestoring);
        EXPECT_EQ(report_.bytes(), isReported ? expectedReport("no_scores.html") : "");
        EXPECT_EQ(scores(), "0 0 0 0.000000");
        std::filesystem::remove(report_.path());
        dialog_->put_LogFile(nullptr);
    }
}

TEST_F(CompassTest, RefusalsAreTold) {
    const auto box = [&](const wchar_t* caption, const wchar_t* text) {
        DialogDriver user([&](DialogDriver& driver) {
            EXPECT_EQ(answerBox(driver, caption), L"(stop) " + std::wstring(text));
        });
        EXPECT_EQ(showNothing(), S_OK);
    };
    link_.answers["Link.WakeUpInstrument"] = {false};
    box(L"Error", L"Unable to connect with the instrument");
    EXPECT_EQ(takeLog(), "Link.WakeUpInstrument\n");
    EXPECT_FALSE(report_.exists());

    access_->isPresent = false;
    box(L"", L"Compass not present or is not responding properly");
    EXPECT_EQ(takeLog(), std::string(kCompassOpening) + kRestoring);
    EXPECT_EQ(report_.bytes(), expectedReport("nothing.html"));

    access_->isPresent = true;
    access_->starts = false;
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        driver.press(IDC_COMPASS_START);
        EXPECT_EQ(answerBox(driver, L"Error"), L"(stop) Unable to start calibration!");
        driver.waitFor(caption_);
        EXPECT_EQ(buttons(driver), L"s");
        driver.press(IDCANCEL);
    }));
    EXPECT_EQ(report_.bytes(), expectedReport("nothing.html"));
}

// A reading that is under way when the calibration ends is no part of it any more.
TEST_F(CompassTest, ClosingCancelsEvenInTheMiddleOfAReading) {
    HWND window = nullptr;
    access_->onCall = [&](const std::string& call) {
        tell(call);
        if (call != "Pitch" || access_->readingsRead != 2) return;
        SendMessageW(window, WM_TIMER, 1, 0);
        SendMessageW(window, WM_COMMAND, IDCANCEL, 0);
    };
    access_->readings.push_back({0, 0, 0});
    show([&](DialogDriver& driver) {
        window = driver.window();
        driver.press(IDC_COMPASS_START);
    });
    EXPECT_EQ(takeLog(), kCompassOpening + ("StartCalibration\n" + std::string(kReading)) +
                             kReading + "Heading\nPitch\nStopCalibration\nRoll\n" + kRestoring);
    EXPECT_EQ(report_.bytes(), expectedReport("canceled.html"));
}

}  // namespace
}  // namespace kel::test
