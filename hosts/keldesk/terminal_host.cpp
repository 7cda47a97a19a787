#include "hosts/keldesk/terminal_host.h"

#include "hosts/shared/create.h"

// What the platform's ATL.DLL exports and no header declares.
extern "C" {
BOOL WINAPI AtlAxWinInit();
HRESULT WINAPI AtlAxCreateControlEx(LPCOLESTR name, HWND window, IStream* stream,
                                    IUnknown** container, IUnknown** control, REFIID events,
                                    IUnknown* sink);
}

namespace kel::keldesk {
namespace {

constexpr char kProgramIdentifier[] = "KelUtils.KelTerminal";
constexpr char kRemedy[] = "run regsvr32 KelUtils.dll";

}  // namespace

TerminalHost::TerminalHost(HWND parent) {
    // Tells what to do where the class is missing; the services only fail.
    host::classOf(kProgramIdentifier, {kProgramIdentifier, kRemedy});
    AtlAxWinInit();
    window_ = CreateWindowExW(0, L"AtlAxWin", L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 0,
                              0, parent, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (!window_) throw com::lastError();
    com::ComPtr<IUnknown> control;
    com::check(AtlAxCreateControlEx(L"KelUtils.KelTerminal", window_, nullptr, nullptr, &control,
                                    GUID_NULL, nullptr));
    com::check(control.As(&terminal_));
}

TerminalHost::~TerminalHost() {
    if (terminal_) terminal_->put_Communicator(nullptr);
    terminal_.Reset();
    DestroyWindow(window_);
}

void TerminalHost::setPlace(const RECT& place) {
    MoveWindow(window_, place.left, place.top, place.right - place.left, place.bottom - place.top,
               TRUE);
}

void TerminalHost::takeFocus() {
    long window = 0;
    if (SUCCEEDED(terminal_->get_hwnd(&window)) && window != 0)
        SetFocus(static_cast<HWND>(LongToHandle(window)));
}

}  // namespace kel::keldesk
