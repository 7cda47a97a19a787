#pragma once
// The KelTerminal control.

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "ole/control.h"
#include "terminal/stream_poll.h"
#include "terminal/terminal_window.h"

namespace kel::terminal {

class KelTerminal final
    : public com::Object<KelTerminal, com::Dual<IKelTerminal3, IKelTerminal2, IKelTerminal>,
                         ole::Control>,
      private TerminalEvents {
public:
    static constexpr com::ClassDescription kClass{&CLSID_KelTerminal, L"KelUtils.KelTerminal.1"};

    KelTerminal();
    ~KelTerminal();

    STDMETHODIMP put_BackColor(OLE_COLOR colour) override;
    STDMETHODIMP get_BackColor(OLE_COLOR* colour) override;
    STDMETHODIMP putref_Font(IFontDisp* font) override;
    STDMETHODIMP put_Font(IFontDisp* font) override;
    STDMETHODIMP get_Font(IFontDisp** font) override;
    STDMETHODIMP put_ForeColor(OLE_COLOR colour) override;
    STDMETHODIMP get_ForeColor(OLE_COLOR* colour) override;
    STDMETHODIMP get_Communicator(IKelCommunicator** communicator) override;
    STDMETHODIMP put_Communicator(IKelCommunicator* communicator) override;
    STDMETHODIMP get_hwnd(long* window) override;
    STDMETHODIMP get_Timer(VARIANT_BOOL* enabled) override;
    STDMETHODIMP put_Timer(VARIANT_BOOL enabled) override;
    STDMETHODIMP get_ShowCommandLine(VARIANT_BOOL* show) override;
    STDMETHODIMP put_ShowCommandLine(VARIANT_BOOL show) override;
    STDMETHODIMP Send() override;
    STDMETHODIMP get_CommandLineBackColor(OLE_COLOR* colour) override;
    STDMETHODIMP put_CommandLineBackColor(OLE_COLOR colour) override;
    STDMETHODIMP get_CommandLineTextColor(OLE_COLOR* colour) override;
    STDMETHODIMP put_CommandLineTextColor(OLE_COLOR colour) override;
    STDMETHODIMP Clear() override;
    STDMETHODIMP get_OutputLimit(long* characters) override;
    STDMETHODIMP put_OutputLimit(long characters) override;
    STDMETHODIMP get_TimeStamps(VARIANT_BOOL* show) override;
    STDMETHODIMP put_TimeStamps(VARIANT_BOOL show) override;
    STDMETHODIMP get_OutputWindow(long* window) override;
    STDMETHODIMP ShowSearch() override;

private:
    const ole::ControlDescription& description() const override;
    void createWindow(HWND parent, const RECT& place) override;
    void destroyWindow() override { window_.close(); }
    HWND windowOfControl() const override { return window_.window(); }
    SIZE naturalSize() const override { return TerminalWindow::naturalSize(); }
    void drawInactive(HDC device, const RECT& place) override;
    com::Variant persisted(DISPID member) const override;
    void restore(DISPID member, const com::Variant& value) override;
    void ambientChanged() override;
    DWORD keyFlags() const override { return look_.showsCommandLine ? CTRLINFO_EATS_RETURN : 0; }

    void opened() override;
    void closing() override { poll_.release(); }
    void ticked() override;
    void fontChanged() override;
    void focusMoved(bool isInside) override { focusChanged(isInside); }
    void sendPressed() override { send(); }
    bool takesKeys() const override { return !site().isDead(); }

    OLE_COLOR& colourOf(DISPID member);
    HRESULT setColour(DISPID member, OLE_COLOR colour);
    HRESULT setFont(const com::ComPtr<IFontDisp>& font);
    void takeFont(const com::ComPtr<IFontDisp>& font);
    void claimStream();
    void send();

    com::ComPtr<IKelCommunicator> communicator_;
    TerminalLook look_;
    TerminalWindow window_;
    StreamPoll poll_;
    bool polls_ = true;
    // False while a form is being designed.
    bool isInUse_ = true;
    bool isSending_ = false;
};

}  // namespace kel::terminal
