#pragma once
// The NewSessionDialog component: starts a session with an instrument or a data file.

#include "dialogs/connect/session_values.h"
#include "interfaces/KelUtils.h"
#include "ui/modal_dialog.h"

namespace kel::connect {

class NewSessionDialog final
    : public ui::ModalDialog<NewSessionDialog, INewSessionDialog2, INewSessionDialog> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_NewSessionDialog,
                                                  L"KelUtils.NewSessionDialog.1"};

    STDMETHODIMP get_ApplicationName(BSTR* name) override;
    STDMETHODIMP put_ApplicationName(BSTR name) override;
    STDMETHODIMP get_FileName(BSTR* path) override;
    STDMETHODIMP get_FileFilter(BSTR* filter) override;
    STDMETHODIMP put_FileFilter(BSTR filter) override;
    STDMETHODIMP get_ShowOpenFileOption(VARIANT_BOOL* isShown) override;
    STDMETHODIMP put_ShowOpenFileOption(VARIANT_BOOL isShown) override;
    STDMETHODIMP get_AutoConnect(VARIANT_BOOL* connects) override;
    STDMETHODIMP put_AutoConnect(VARIANT_BOOL connects) override;
    STDMETHODIMP get_Title(BSTR* title) override;
    STDMETHODIMP put_Title(BSTR title) override;
    STDMETHODIMP get_ShowWorkspaceOption(VARIANT_BOOL* isShown) override;
    STDMETHODIMP put_ShowWorkspaceOption(VARIANT_BOOL isShown) override;
    STDMETHODIMP get_UseWorkspace(VARIANT_BOOL* isUsed) override;
    STDMETHODIMP put_UseWorkspace(VARIANT_BOOL isUsed) override;

    // INewSessionDialog2
    STDMETHODIMP get_Unattended(VARIANT_BOOL* isUnattended) override;
    STDMETHODIMP put_Unattended(VARIANT_BOOL isUnattended) override;
    STDMETHODIMP RememberConnection() override;

    bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);

private:
    HRESULT get(const std::wstring& value, BSTR* text);
    HRESULT put(std::wstring& value, BSTR text);
    HRESULT get(bool value, VARIANT_BOOL* flag);
    HRESULT put(bool& value, VARIANT_BOOL flag);

    SessionValues values_;
    bool isUnattended_ = false;
};

}  // namespace kel::connect
