#include "hosts/shared/session.h"

#include "com/text.h"
#include "com/variant.h"
#include "hosts/shared/create.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/failure.h"

namespace kel::host {

com::ComPtr<INewSessionDialog2> newSession(const com::ComPtr<IKelCommunicator>& link,
                                           const std::string& application) {
    auto dialog =
        create<INewSessionDialog2>("KelUtils.NewSessionDialog", "run regsvr32 KelUtils.dll");
    com::check(dialog->put_Communicator(link.Get()), dialog);
    com::check(dialog->put_ApplicationName(com::Bstr(application, CP_UTF8).get()), dialog);
    return dialog;
}

void connectAsLastTime(const com::ComPtr<IKelCommunicator>& link, const std::string& application) {
    const auto dialog = newSession(link, application);
    com::check(dialog->put_Unattended(VARIANT_TRUE), dialog);
    VARIANT_BOOL isConnected = VARIANT_FALSE;
    try {
        com::check(dialog->ShowModal(0, &isConnected), dialog);
    } catch (const com::Error& error) {
        const std::wstring& reason = error.description();
        throw Failure(
            ExitCode::kNoConnection,
            "no connection: " + (reason.empty() ? describe(error) : com::narrow(reason, CP_UTF8)));
    }
    if (!com::isTrue(isConnected))
        throw Failure(ExitCode::kNoConnection, "no connection: none was made");
}

void rememberConnection(const com::ComPtr<IKelCommunicator>& link, const std::string& application) {
    newSession(link, application)->RememberConnection();
}

}  // namespace kel::host
