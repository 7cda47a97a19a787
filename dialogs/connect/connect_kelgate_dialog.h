#pragma once
// The ConnectKelGateDialog component: connects the link through a network gateway.

#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::connect {

class ConnectKelGateDialog final
    : public ui::ModalDialog<ConnectKelGateDialog, IConnectKelGateDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_ConnectKelGateDialog,
                                                  L"KelUtils.ConnectKelGateDialog.1"};

    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);
};

}  // namespace kel::connect
