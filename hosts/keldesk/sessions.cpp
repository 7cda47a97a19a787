#include "hosts/keldesk/sessions.h"

#include "com/text.h"
#include "com/variant.h"
#include "hosts/shared/create.h"
#include "hosts/shared/session.h"

namespace kel::keldesk {
namespace {

constexpr wchar_t kFilter[] = L"Logs and scripts|*.log;*.kel;*.txt|All files|*.*|";

template <class Dialog>
bool showOver(HWND owner, const com::ComPtr<Dialog>& dialog) {
    VARIANT_BOOL result = VARIANT_FALSE;
    com::check(dialog->ShowModal(HandleToLong(owner), &result), dialog);
    return com::isTrue(result);
}

template <class Dialog>
bool connectBy(const char* component, HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    const auto dialog = host::create<Dialog>(component, "run regsvr32 KelUtils.dll");
    com::check(dialog->put_Communicator(link.Get()), dialog);
    return showOver(owner, dialog);
}

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
    return connectBy<IConnectSerialDialog>("KelUtils.ConnectSerialDialog", owner, link);
}

bool connectNetwork(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    return connectBy<IConnectKelGateDialog>("KelUtils.ConnectKelGateDialog", owner, link);
}

}  // namespace kel::keldesk
