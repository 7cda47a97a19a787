#pragma once
// The ConnectSerialDialog component: connects the link to a serial port.

#include <string>

#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::connect {

class ConnectSerialDialog final
    : public ui::ModalDialog<ConnectSerialDialog, IConnectSerialDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_ConnectSerialDialog,
                                                  L"KelUtils.ConnectSerialDialog.1"};

    STDMETHODIMP get_Application(BSTR* application) override;
    STDMETHODIMP put_Application(BSTR application) override;
    STDMETHODIMP get_Title(BSTR* title) override;
    STDMETHODIMP put_Title(BSTR title) override;

    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);

private:
    std::wstring application_;
    std::wstring title_;
};

}  // namespace kel::connect
