#include "dialogs/service/pressure_offset_dialog.h"

#include "com/port.h"
#include "com/text.h"
#include "dialogs/service/access.h"
#include "dialogs/service/instrument.h"
#include "dialogs/service/model/pressure_offset.h"
#include "dialogs/service/polling_dialog.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "ui/link_settings.h"

namespace kel::service {
namespace {

constexpr long kAnswerTime = 3000;  // milliseconds
constexpr long kBreak = 300;        // milliseconds

class PressureWindow final : public PollingDialog {
public:
    PressureWindow(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link,
                   com::ComPtr<IPressureAccess> pressure, bool isMetric)
        : PollingDialog(component),
          link_(std::move(link)),
          pressure_(std::move(pressure)),
          isMetric_(isMetric) {}

protected:
    void initialise() override;
    int statusLine() const override { return IDC_PRESSURE_STATUS; }
    void poll() override;
    void press(int button) override;
    void leave() override;

private:
    void start();
    void stop();
    void setOffset();
    bool succeeds(const std::string& command) const;
    void showPressure(int field, double decibars) {
        setText(field, com::widen(shownPressure(decibars, isMetric_)));
    }

    com::ComPtr<IKelCommunicator> link_;
    com::ComPtr<IPressureAccess> pressure_;
    bool isMetric_;
};

void PressureWindow::initialise() {
    if (!isMetric_) {
        setText(IDC_PRESSURE_CURRENT_LABEL, L"Current Measured Pressure (psi):");
        setText(IDC_PRESSURE_MEAN_LABEL, L"Calculated Mean Pressure (psi):");
    }
    startPolling();
}

void PressureWindow::poll() {
    const bool isNew = isSo(pressure_, &IPressureAccess::get_NewData);
    watch(isNew);
    if (!isNew) return;
    const auto current = ask<double>(pressure_, &IPressureAccess::get_CurrentPressure);
    const auto mean = ask<double>(pressure_, &IPressureAccess::get_MeanPressure);
    showPressure(IDC_PRESSURE_CURRENT, current);
    showPressure(IDC_PRESSURE_MEAN, mean);
}

void PressureWindow::press(int button) {
    // A failure that was shown is the past.
    showStatus({});
    switch (button) {
        case IDC_PRESSURE_START:
            return start();
        case IDC_PRESSURE_STOP:
            return stop();
        case IDC_PRESSURE_SET:
            return setOffset();
    }
}

void PressureWindow::start() {
    if (!isSo(pressure_, &IPressureAccess::StartCollection))
        return tellError(window(), L"Unable to start calibration!");
    expectData();
    offer({IDC_PRESSURE_STOP}, {IDC_PRESSURE_START, IDC_PRESSURE_SET});
}

void PressureWindow::stop() {
    if (!isSo(pressure_, &IPressureAccess::StopCollection))
        return tellError(window(), L"Unable to stop calibration!");
    expectNothing();
    offer({IDC_PRESSURE_SET, IDC_PRESSURE_START}, {IDC_PRESSURE_STOP});
}

void PressureWindow::setOffset() {
    if (!wakeInstrument(link_, window())) return;
    const auto offset = ask<double>(pressure_, &IPressureAccess::get_Offset);
    const auto mean = ask<double>(pressure_, &IPressureAccess::get_MeanPressure);
    if (!succeeds(offsetCommand(offset, mean)))
        return tellError(window(), L"Unable to update pressure offset");
    if (!succeeds(kSaveCommand)) return tellError(window(), L"Unable to update setup");
    end(IDOK);
}

bool PressureWindow::succeeds(const std::string& command) const {
    VARIANT_BOOL isDone = VARIANT_FALSE;
    com::check(link_->SendCommand(com::Bstr(std::string_view(command)).get(), VARIANT_TRUE,
                                  kAnswerTime, &isDone),
               link_);
    return com::isTrue(isDone);
}

void PressureWindow::leave() {
    // False only tells that nothing was being collected.
    isSo(pressure_, &IPressureAccess::StopCollection);
    com::check(link_->SendBreak(kBreak), link_);
}

}  // namespace

bool PressureOffsetDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    if (!wakeInstrument(link, owner)) return false;
    const auto pressure = makeAccess<IPressureAccess>(link::kPressureAccessClass, link);
    const auto port = com::presentPortOf(link);
    const ui::LinkSettings settings(port);
    com::check(port->put_EchoWindow(0), port);
    com::check(port->put_IdleProcessing(VARIANT_TRUE), port);
    return PressureWindow(*this, link, pressure, isMetric_).runModal(IDD_PRESSURE_OFFSET, owner) ==
           IDOK;
}

HRESULT PressureOffsetDialog::get_UseMetricUnits(VARIANT_BOOL* metric) {
    return guarded<IPressureOffsetDialog>([&] { com::out(metric) = com::variantBool(isMetric_); });
}

HRESULT PressureOffsetDialog::put_UseMetricUnits(VARIANT_BOOL metric) {
    return guarded<IPressureOffsetDialog>([&] { isMetric_ = com::isTrue(metric); });
}

}  // namespace kel::service
