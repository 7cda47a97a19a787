#include "dialogs/connect/connect_serial_dialog.h"

#include "com/text.h"
#include "dialogs/connect/serial_form.h"
#include "resources/resource_ids.h"

namespace kel::connect {
namespace {

class SerialDialog final : public SerialForm {
public:
    SerialDialog(com::ObjectCore& component, const com::ComPtr<IKelCommunicator>& link,
                 std::wstring title)
        : SerialForm(component, link), title_(std::move(title)) {}

protected:
    void initialise() override {
        // First: what follows may fail and leave the dialog as it is.
        if (!title_.empty()) SetWindowTextW(window(), title_.c_str());
        SerialForm::initialise();
    }
    SerialRules rules() const override { return {.putsSameRate = true}; }
    std::wstring failureText(const std::wstring& port, DWORD error) const override {
        return L"Unable to connect to '" + port + L"' (error:" + std::to_wstring(error) + L")";
    }
    void confirm() override {
        const Busy busy(*this);
        if (connect()) end(IDOK);
    }

private:
    std::wstring title_;
};

}  // namespace

bool ConnectSerialDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return SerialDialog(*this, link, title_).runModal(IDD_CONNECT_SERIAL, owner) == IDOK;
}

HRESULT ConnectSerialDialog::get_Application(BSTR* application) {
    return guarded<IConnectSerialDialog>([&] {
        com::out(application) = nullptr;
        *application = com::Bstr(application_).release();
    });
}

HRESULT ConnectSerialDialog::put_Application(BSTR application) {
    return guarded<IConnectSerialDialog>([&] { application_ = com::view(application); });
}

HRESULT ConnectSerialDialog::get_Title(BSTR* title) {
    return guarded<IConnectSerialDialog>([&] {
        com::out(title) = nullptr;
        *title = com::Bstr(title_).release();
    });
}

HRESULT ConnectSerialDialog::put_Title(BSTR title) {
    return guarded<IConnectSerialDialog>([&] { title_ = com::view(title); });
}

}  // namespace kel::connect
