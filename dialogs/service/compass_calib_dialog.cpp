#include "dialogs/service/compass_calib_dialog.h"

#include "com/port.h"
#include "com/text.h"
#include "dialogs/service/access.h"
#include "dialogs/service/instrument.h"
#include "dialogs/service/model/compass_report.h"
#include "dialogs/service/polling_dialog.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "ui/link_settings.h"
#include "ui/model/formats.h"

namespace kel::service {
namespace {

constexpr wchar_t kTurnTheCompass[] =
    L"Begin slowly rotating the compass two full turns, varying the pitch and roll as much as "
    L"possible.\nAllow at least a minute for each turn.\nOnce the calibration is done, press "
    L"'Stop' to display the calibration score.";

class CompassWindow final : public PollingDialog {
public:
    // The report and the scores are filled as they come.
    CompassWindow(com::ObjectCore& component, com::ComPtr<ICompassAccess> compass,
                  CompassReport& report, std::optional<CompassScores>& scores)
        : PollingDialog(component),
          compass_(std::move(compass)),
          report_(report),
          scores_(scores) {}

protected:
    void initialise() override;
    HWND initialFocus() override { return control(IDC_COMPASS_START); }
    int statusLine() const override { return IDC_COMPASS_TEXT; }
    void poll() override;
    void press(int button) override;
    void leave() override;

private:
    void start();
    void stop();
    void tellScores();
    bool endCalibration();

    com::ComPtr<ICompassAccess> compass_;
    CompassReport& report_;
    std::optional<CompassScores>& scores_;
};

void CompassWindow::initialise() {
    if (!isSo(compass_, &ICompassAccess::Initialise)) {
        MessageBoxW(window(), L"Compass not present or is not responding properly", L"",
                    MB_OK | MB_ICONSTOP);
        return end(IDCANCEL);
    }
    showStatus(L"Compass initialized.\nPress 'Start' to calibrate it!");
    enable(IDC_COMPASS_START, true);
    startPolling();
}

void CompassWindow::poll() {
    if (!isSo(compass_, &ICompassAccess::get_Calibrating)) return expectNothing();
    const bool isNew = !isSo(compass_, &ICompassAccess::get_Busy);
    watch(isNew);
    if (!isNew) return;
    const auto read = [&](auto member) {
        return ui::decimalText(ask<double>(compass_, member), 1);
    };
    const ReadingTexts reading{read(&ICompassAccess::get_Heading), read(&ICompassAccess::get_Pitch),
                               read(&ICompassAccess::get_Roll)};
    setText(IDC_COMPASS_HEADING, com::widen(reading[0]));
    setText(IDC_COMPASS_PITCH, com::widen(reading[1]));
    setText(IDC_COMPASS_ROLL, com::widen(reading[2]));
    report_.addReading(reading);
}

void CompassWindow::press(int button) {
    if (button == IDC_COMPASS_START) start();
    if (button == IDC_COMPASS_STOP) stop();
}

void CompassWindow::start() {
    if (!isSo(compass_, &ICompassAccess::StartCalibration))
        return tellError(window(), L"Unable to start calibration!");
    showStatus(kTurnTheCompass);
    expectData();
    report_.beginCalibration();
    offer({IDC_COMPASS_STOP}, {IDC_COMPASS_START});
}

void CompassWindow::stop() {
    endCalibration();
    offer({IDC_COMPASS_START}, {IDC_COMPASS_STOP});
    tellScores();
}

void CompassWindow::tellScores() {
    long horizontal = 0;
    long vertical = 0;
    double field = 0;
    VARIANT_BOOL isRead = VARIANT_FALSE;
    com::check(compass_->ReadScores(&horizontal, &vertical, &field, &isRead), compass_);
    if (!com::isTrue(isRead)) {
        showStatus(L"Error obtaining scores!");
        report_.addParagraph("Error obtaining scores!");
        return;
    }
    scores_ = acceptedScores(horizontal, vertical, field);
    const ScoreTexts texts = scoreTexts(*scores_);
    report_.addScores(texts);
    showStatus(com::widen(shownScores(texts)));
}

void CompassWindow::leave() {
    if (endCalibration()) report_.addParagraph("Calibration canceled!");
}

// False where none was running.
bool CompassWindow::endCalibration() {
    expectNothing();
    if (!isSo(compass_, &ICompassAccess::get_Calibrating)) return false;
    com::check(compass_->StopCalibration(), compass_);
    report_.endCalibration();
    return true;
}

}  // namespace

bool CompassCalibDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    scores_.reset();
    if (!wakeInstrument(link, owner)) return false;
    const auto compass = makeAccess<ICompassAccess>(link::kCompassAccessClass, link);
    CompassReport report;
    if (!logFile_.empty()) report.open(logFile_);
    const ui::LinkSettings settings(com::presentPortOf(link));
    CompassWindow(*this, compass, report, scores_).runModal(IDD_COMPASS_CALIBRATION, owner);
    return false;
}

HRESULT CompassCalibDialog::put_LogFile(BSTR path) {
    return guarded<ICompassCalibDialog>([&] { logFile_ = com::view(path); });
}

HRESULT CompassCalibDialog::get_ScoresRead(VARIANT_BOOL* read) {
    return guarded<ICompassCalibDialog2>(
        [&] { com::out(read) = com::variantBool(scores_.has_value()); });
}

HRESULT CompassCalibDialog::get_HorizontalScore(long* score) {
    return guarded<ICompassCalibDialog2>(
        [&] { com::out(score) = scores_.value_or(CompassScores{}).horizontal; });
}

HRESULT CompassCalibDialog::get_VerticalScore(long* score) {
    return guarded<ICompassCalibDialog2>(
        [&] { com::out(score) = scores_.value_or(CompassScores{}).vertical; });
}

HRESULT CompassCalibDialog::get_FieldStrength(double* strength) {
    return guarded<ICompassCalibDialog2>(
        [&] { com::out(strength) = scores_.value_or(CompassScores{}).field; });
}

}  // namespace kel::service
