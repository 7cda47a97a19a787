#include "dialogs/connect/connect_kelgate_dialog.h"

#include "dialogs/connect/network_form.h"
#include "resources/resource_ids.h"

namespace kel::connect {
namespace {

class NetworkDialog final : public NetworkForm {
public:
    using NetworkForm::NetworkForm;

protected:
    void confirm() override {
        if (connect()) end(IDOK);
    }
};

}  // namespace

bool ConnectKelGateDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return NetworkDialog(*this, link).runModal(IDD_CONNECT_NETWORK, owner) == IDOK;
}

}  // namespace kel::connect
