#include "dialogs/service/recorder_dialog.h"

#include "dialogs/service/recorder_window.h"
#include "resources/resource_ids.h"

namespace kel::service {

bool RecorderDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    com::ComPtr<IRecorderAccess> recorder;
    com::check(link->QueryInterface(IID_PPV_ARGS(&recorder)), link);
    return RecorderWindow(*this, link, recorder).runModal(IDD_RECORDER, owner) == IDOK;
}

}  // namespace kel::service
