#pragma once
// The PressureOffsetDialog component: zeroes the instrument's pressure sensor.

#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::service {

class PressureOffsetDialog final
    : public ui::ModalDialog<PressureOffsetDialog, IPressureOffsetDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_PressureOffsetDialog,
                                                  L"KelUtils.PressureOffsetDialog.1"};

    STDMETHODIMP get_UseMetricUnits(VARIANT_BOOL* metric) override;
    STDMETHODIMP put_UseMetricUnits(VARIANT_BOOL metric) override;

    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);

private:
    bool isMetric_ = false;
};

}  // namespace kel::service
