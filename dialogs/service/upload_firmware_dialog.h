#pragma once
// The UploadFirmwareDialog component: loads a firmware file into the instrument.

#include <string>

#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::service {

class UploadFirmwareDialog final
    : public ui::ModalDialog<UploadFirmwareDialog, IUploadFirmwareDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_UploadFirmwareDialog,
                                                  L"KelUtils.UploadFirmwareDialog.1"};

    STDMETHODIMP get_FilePath(BSTR* path) override;
    STDMETHODIMP put_FilePath(BSTR path) override;

    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);

private:
    std::wstring filePath_;
    long accessCode_ = 0;
};

}  // namespace kel::service
