#pragma once
// The CompassCalibDialog component: calibrates the instrument's compass.

#include <optional>
#include <string>

#include "dialogs/service/model/compass_scores.h"
#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::service {

class CompassCalibDialog final
    : public ui::ModalDialog<CompassCalibDialog, ICompassCalibDialog2, ICompassCalibDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_CompassCalibDialog,
                                                  L"KelUtils.CompassCalibDialog.1"};

    STDMETHODIMP put_LogFile(BSTR path) override;
    STDMETHODIMP get_ScoresRead(VARIANT_BOOL* read) override;
    STDMETHODIMP get_HorizontalScore(long* score) override;
    STDMETHODIMP get_VerticalScore(long* score) override;
    STDMETHODIMP get_FieldStrength(double* strength) override;

    // Always false: the user closes the dialog when it has told all.
    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);

private:
    std::wstring logFile_;
    std::optional<CompassScores> scores_;
};

}  // namespace kel::service
