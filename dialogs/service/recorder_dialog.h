#pragma once
// The RecorderDialog component: lists, downloads and formats the instrument's recorder card.

#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::service {

class RecorderDialog final : public ui::ModalDialog<RecorderDialog, IRecorderDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_RecorderDialog,
                                                  L"KelUtils.RecorderDialog.1"};

    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);
};

}  // namespace kel::service
