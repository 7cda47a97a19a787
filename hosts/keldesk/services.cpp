#include "hosts/keldesk/services.h"

#include "com/text.h"
#include "hosts/keldesk/library_dialog.h"

namespace kel::keldesk {

bool updateFirmware(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return showOver(owner, dialogFor<IUploadFirmwareDialog>("KelUtils.UploadFirmwareDialog", link));
}

bool setPressureOffset(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    const auto dialog = dialogFor<IPressureOffsetDialog>("KelUtils.PressureOffsetDialog", link);
    com::check(dialog->put_UseMetricUnits(VARIANT_TRUE), dialog);
    return showOver(owner, dialog);
}

bool showRecorder(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return showOver(owner, dialogFor<IRecorderDialog>("KelUtils.RecorderDialog", link));
}

bool calibrateCompass(HWND owner, const com::ComPtr<IKelCommunicator>& link,
                      const std::wstring& report) {
    const auto dialog = dialogFor<ICompassCalibDialog>("KelUtils.CompassCalibDialog", link);
    com::check(dialog->put_LogFile(com::Bstr(report).get()), dialog);
    return showOver(owner, dialog);
}

}  // namespace kel::keldesk
