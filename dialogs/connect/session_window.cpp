#include "dialogs/connect/session_window.h"

#include "com/port.h"
#include "com/variant.h"
#include "resources/resource_ids.h"

namespace kel::connect {
namespace {

constexpr SessionOption kOptions[] = {SessionOption::Serial, SessionOption::Network,
                                      SessionOption::File};
static_assert(static_cast<int>(SessionOption::Serial) == IDC_SESSION_SERIAL &&
              static_cast<int>(SessionOption::Network) == IDC_SESSION_NETWORK &&
              static_cast<int>(SessionOption::File) == IDC_SESSION_FILE);

}  // namespace

UINT confirmMessage() {
    static const UINT message = RegisterWindowMessageW(L"KelUtils.CNewSessionDlg.UpdateSettings");
    return message;
}

SessionWindow::SessionWindow(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link,
                             SessionValues& values)
    : Dialog(&component),
      link_(std::move(link)),
      values_(values),
      serial_(component, link_, values.application),
      network_(component, link_),
      file_(component, values) {}

bool SessionWindow::run(HWND owner) {
    return runModal(IDD_NEW_SESSION, owner) == IDOK;
}

SessionPage& SessionWindow::page(SessionOption option) {
    switch (option) {
        case SessionOption::Network:
            return network_;
        case SessionOption::File:
            return file_;
        default:
            return serial_;
    }
}

void SessionWindow::initialise() {
    if (!values_.title.empty()) SetWindowTextW(window(), values_.title.c_str());
    show(IDC_SESSION_FILE, values_.offersFiles);
    createPage(serial_, IDD_SERIAL_PAGE);
    createPage(network_, IDD_NETWORK_PAGE);
    createPage(file_, IDD_OPEN_FILE_PAGE);
    // Where the link does not tell what it is connected with, there is a page all the same.
    choose(SessionOption::Serial);

    const RememberedSession remembered = loadSession(values_.application);
    const PresentPort port = presentPort();
    choose(firstOption(port, remembered, values_.offersFiles));
    if (values_.connectsAtOnce && connectsAtOnce(port, remembered) &&
        page(option_).carryOutAlone()) {
        finish();
        return;
    }
    for (const SessionOption option : kOptions)
        page(option).dialog().rethrowInitialisationFailure();
}

void SessionWindow::createPage(SessionPage& page, WORD resource) {
    page.dialog().createPart(resource, window());
    const ui::Rectangle place = placeOf(IDC_SESSION_PAGE);
    SetWindowPos(page.dialog().window(), nullptr, place.left, place.top, place.width(),
                 place.height(), SWP_NOZORDER | SWP_NOACTIVATE);
}

PresentPort SessionWindow::presentPort() const {
    const auto port = com::portOf(link_);
    if (!port) return PresentPort::None;
    com::ComPtr<INetworkStream> network;
    if (SUCCEEDED(port.As(&network))) return PresentPort::Network;
    com::ComPtr<ISerialStream> serial;
    if (FAILED(port.As(&serial))) return PresentPort::None;
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    com::check(port->get_IsOpen(&isOpen), port);
    return com::isTrue(isOpen) ? PresentPort::OpenSerial : PresentPort::None;
}

HWND SessionWindow::initialFocus() {
    return control(static_cast<int>(option_));
}

void SessionWindow::choose(SessionOption option) {
    option_ = option;
    CheckRadioButton(window(), IDC_SESSION_SERIAL, IDC_SESSION_FILE, static_cast<int>(option));
    for (const SessionOption each : kOptions)
        ShowWindow(page(each).dialog().window(), each == option ? SW_SHOW : SW_HIDE);
}

bool SessionWindow::command(int control, int notification) {
    // What a page is about to do decides what is remembered.
    if (page(option_).dialog().isBusy() && control != IDCANCEL) {
        choose(option_);
        return true;
    }
    switch (control) {
        case IDC_SESSION_SERIAL:
        case IDC_SESSION_NETWORK:
        case IDC_SESSION_FILE:
            if (notification == BN_CLICKED) choose(static_cast<SessionOption>(control));
            return true;
        case IDOK:
            if (page(option_).carryOut()) finish();
            return true;
        case IDCANCEL:
            serial_.leave();
            network_.leave();
            return Dialog::command(control, notification);
    }
    // Enter on a button of the page comes to the window that has the keyboard.
    const HWND inside = page(option_).dialog().window();
    SendMessageW(inside, WM_COMMAND, MAKEWPARAM(control, notification),
                 reinterpret_cast<LPARAM>(GetDlgItem(inside, control)));
    return true;
}

std::optional<LRESULT> SessionWindow::handle(UINT message, WPARAM, LPARAM) {
    if (message != confirmMessage()) return std::nullopt;
    command(IDOK, BN_CLICKED);
    return 0;
}

void SessionWindow::showFailure(const std::wstring& text) {
    page(option_).tell(text);
}

void SessionWindow::finish() {
    saveSession(values_.application, option_);
    end(IDOK);
}

}  // namespace kel::connect
