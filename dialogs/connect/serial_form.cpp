#include "dialogs/connect/serial_form.h"

#include "dialogs/connect/port_icon.h"
#include "resources/resource_ids.h"

namespace kel::connect {
namespace {

constexpr int kFirstButton = IDC_SERIAL_COM1;
constexpr int kLastButton = IDC_SERIAL_COM1 + kPorts - 1;
constexpr int kSmallIcon = 16;
constexpr int kLargeIcon = 24;
constexpr int kLargeFrom = 120;  // dots per inch

bool isPortButton(int control) {
    return control >= kFirstButton && control <= kLastButton;
}

}  // namespace

int SerialForm::statusLine() const {
    return IDC_SERIAL_STATUS;
}

void SerialForm::initialise() {
    link_.createStream();
    fillRates();
    port_ = firstPort();
    refresh();
}

long SerialForm::firstRate() {
    const auto rate = link_.currentRate();
    return rate ? listedRate(std::to_string(*rate)) : kDefaultBaudRate;
}

void SerialForm::fillRates() {
    const HWND list = control(IDC_SERIAL_RATE);
    for (const long rate : kBaudRates) {
        const auto index = SendMessageW(list, CB_ADDSTRING, 0,
                                        reinterpret_cast<LPARAM>(std::to_wstring(rate).c_str()));
        SendMessageW(list, CB_SETITEMDATA, static_cast<WPARAM>(index), rate);
    }
    const auto choose = [&](long wanted) {
        for (WPARAM index = 0; index < std::size(kBaudRates); ++index)
            if (kBaudRates[index] == wanted) SendMessageW(list, CB_SETCURSEL, index, 0);
    };
    // Where the link does not tell, there is a choice all the same.
    choose(kDefaultBaudRate);
    choose(firstRate());
}

long SerialForm::chosenRate() const {
    const HWND list = control(IDC_SERIAL_RATE);
    const auto index = SendMessageW(list, CB_GETCURSEL, 0, 0);
    return static_cast<long>(SendMessageW(list, CB_GETITEMDATA, static_cast<WPARAM>(index), 0));
}

void SerialForm::refresh() {
    // The link may run messages: a port that is chosen or connected meanwhile would be closed by
    // the probe.
    const Busy busy(*this);
    states_ = probePorts(
        port_, {[&](const std::wstring& name) { return !isLeaving_ && link_.exists(name); },
                [&](const std::wstring& name) { return link_.opens(name); }});
    if (isLeaving_) return;
    for (int number = 1; number <= kPorts; ++number) {
        const int button = kFirstButton + number - 1;
        setText(button, buttonText(number, states_[static_cast<std::size_t>(number - 1)]));
        InvalidateRect(control(button), nullptr, TRUE);
    }
}

bool SerialForm::connect() {
    const std::wstring port = port_;
    const long rate = chosenRate();
    if (port.empty()) {
        link_.requireStream();
        showStatus(L"There is no port to connect to");
        return false;
    }
    if (link_.isCurrent(port)) {
        link_.setRate(rate, rules());
        connected(port, rate);
        return true;
    }
    showStatus(L"Connecting to " + port + L" at " + std::to_wstring(rate));
    if (const auto error = link_.connect(port, rate)) {
        showStatus(failureText(port, *error));
        return false;
    }
    connected(port, rate);
    return true;
}

bool SerialForm::command(int control, int notification) {
    if (isPortButton(control)) {
        if (notification != BN_CLICKED) return true;
        port_ = portName(control - kFirstButton + 1);
        refresh();
        return true;
    }
    return Form::command(control, notification);
}

std::optional<LRESULT> SerialForm::handle(UINT message, WPARAM wide, LPARAM longer) {
    if (message != WM_DRAWITEM || !isPortButton(static_cast<int>(wide))) return std::nullopt;
    draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(longer));
    return TRUE;
}

void SerialForm::draw(const DRAWITEMSTRUCT& item) const {
    const int number = static_cast<int>(item.CtlID) - kFirstButton + 1;
    const PortState state = states_[static_cast<std::size_t>(number - 1)];
    const bool isLarge = GetDeviceCaps(item.hDC, LOGPIXELSX) >= kLargeFrom;
    const int size = isLarge ? kLargeIcon : kSmallIcon;
    const bool isPressed = (item.itemState & ODS_SELECTED) != 0 || state == PortState::Selected;

    RECT place = item.rcItem;
    DrawFrameControl(item.hDC, &place, DFC_BUTTON,
                     DFCS_BUTTONPUSH | (isPressed ? DFCS_PUSHED : 0u));
    const int margin = static_cast<int>(place.bottom - place.top - size) / 2;
    drawPortIcon(item.hDC, static_cast<int>(place.left) + margin,
                 static_cast<int>(place.top) + margin, size, state);
    RECT text = place;
    text.left += margin + size;
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC,
                 GetSysColor(state == PortState::Absent ? COLOR_GRAYTEXT : COLOR_BTNTEXT));
    DrawTextW(item.hDC, (L"Com" + std::to_wstring(number)).c_str(), -1, &text,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    if (item.itemState & ODS_FOCUS) {
        InflateRect(&place, -3, -3);
        DrawFocusRect(item.hDC, &place);
    }
}

}  // namespace kel::connect
