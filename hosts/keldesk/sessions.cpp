#include "hosts/keldesk/sessions.h"

#include "com/text.h"
#include "hosts/keldesk/library_dialog.h"
#include "hosts/shared/session.h"

namespace kel::keldesk {
namespace {

constexpr wchar_t kFilter[] = L"Logs and scripts|*.log;*.kel;*.txt|All files|*.*|";

}  // namespace

Session beginSession(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    const auto dialog = host::newSession(link, kApplicationName);
    com::check(dialog->put_ShowOpenFileOption(VARIANT_TRUE), dialog);
    com::check(dialog->put_FileFilter(com::Bstr(std::wstring_view(kFilter)).get()), dialog);
    Session session;
    session.isBegun = showOver(owner, dialog);
    com::Bstr file;
    com::check(dialog->get_FileName(file.put()), dialog);
    session.file = file.view();
    return session;
}

bool connectSerial(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return showOver(owner, dialogFor<IConnectSerialDialog>("KelUtils.ConnectSerialDialog", link));
}

bool connectNetwork(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return showOver(owner, dialogFor<IConnectKelGateDialog>("KelUtils.ConnectKelGateDialog", link));
}

}  // namespace kel::keldesk
