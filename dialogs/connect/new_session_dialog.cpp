#include "dialogs/connect/new_session_dialog.h"

#include "com/text.h"
#include "dialogs/connect/last_connection.h"
#include "dialogs/connect/session_window.h"

namespace kel::connect {

bool NewSessionDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    values_.fileName.clear();
    if (isUnattended_) {
        connectAsLastTime(link, values_.application);
        return true;
    }
    // A host may put values meanwhile: they are for the next time.
    SessionValues values = values_;
    const bool isDone = SessionWindow(*this, link, values).run(owner);
    values_.fileName = values.fileName;
    if (!values.fileName.empty()) values_.usesWorkspace = values.usesWorkspace;
    return isDone;
}

HRESULT NewSessionDialog::RememberConnection() {
    return guarded<INewSessionDialog2>([&] {
        if (!communicator()) throw com::Error(E_INVALIDARG, L"The dialog has no communicator");
        const com::KeepAlive alive(*this);
        rememberConnection(communicator(), values_.application);
    });
}

HRESULT NewSessionDialog::get(const std::wstring& value, BSTR* text) {
    return guarded<INewSessionDialog>([&] {
        com::out(text) = nullptr;
        *text = com::Bstr(value).release();
    });
}

HRESULT NewSessionDialog::put(std::wstring& value, BSTR text) {
    return guarded<INewSessionDialog>([&] { value = com::view(text); });
}

HRESULT NewSessionDialog::get(bool value, VARIANT_BOOL* flag) {
    return guarded<INewSessionDialog>([&] { com::out(flag) = com::variantBool(value); });
}

HRESULT NewSessionDialog::put(bool& value, VARIANT_BOOL flag) {
    return guarded<INewSessionDialog>([&] { value = com::isTrue(flag); });
}

HRESULT NewSessionDialog::get_ApplicationName(BSTR* name) {
    return get(values_.application, name);
}
HRESULT NewSessionDialog::put_ApplicationName(BSTR name) {
    return put(values_.application, name);
}
HRESULT NewSessionDialog::get_FileName(BSTR* path) {
    return get(values_.fileName, path);
}
HRESULT NewSessionDialog::get_FileFilter(BSTR* filter) {
    return get(values_.fileFilter, filter);
}
HRESULT NewSessionDialog::put_FileFilter(BSTR filter) {
    return put(values_.fileFilter, filter);
}
HRESULT NewSessionDialog::get_ShowOpenFileOption(VARIANT_BOOL* isShown) {
    return get(values_.offersFiles, isShown);
}
HRESULT NewSessionDialog::put_ShowOpenFileOption(VARIANT_BOOL isShown) {
    return put(values_.offersFiles, isShown);
}
HRESULT NewSessionDialog::get_AutoConnect(VARIANT_BOOL* connects) {
    return get(values_.connectsAtOnce, connects);
}
HRESULT NewSessionDialog::put_AutoConnect(VARIANT_BOOL connects) {
    return put(values_.connectsAtOnce, connects);
}
HRESULT NewSessionDialog::get_Title(BSTR* title) {
    return get(values_.title, title);
}
HRESULT NewSessionDialog::put_Title(BSTR title) {
    return put(values_.title, title);
}
HRESULT NewSessionDialog::get_ShowWorkspaceOption(VARIANT_BOOL* isShown) {
    return get(values_.offersWorkspaces, isShown);
}
HRESULT NewSessionDialog::put_ShowWorkspaceOption(VARIANT_BOOL isShown) {
    return put(values_.offersWorkspaces, isShown);
}
HRESULT NewSessionDialog::get_UseWorkspace(VARIANT_BOOL* isUsed) {
    return get(values_.usesWorkspace, isUsed);
}
HRESULT NewSessionDialog::put_UseWorkspace(VARIANT_BOOL isUsed) {
    return put(values_.usesWorkspace, isUsed);
}
HRESULT NewSessionDialog::get_Unattended(VARIANT_BOOL* isUnattended) {
    return guarded<INewSessionDialog2>(
        [&] { com::out(isUnattended) = com::variantBool(isUnattended_); });
}
HRESULT NewSessionDialog::put_Unattended(VARIANT_BOOL isUnattended) {
    return guarded<INewSessionDialog2>([&] { isUnattended_ = com::isTrue(isUnattended); });
}

}  // namespace kel::connect
