#include "dialogs/connect/serial_page.h"

namespace kel::connect {

std::wstring sessionFailureText(const std::wstring& port, DWORD error) {
    return L"Unable to connect to '" + port + L"' (" + std::to_wstring(error) + L")";
}

bool SerialPage::carryOut() {
    const Busy busy(*this);
    return connect();
}

void SerialPage::initialise() {
    remembered_ = loadPort(application_);
    SerialForm::initialise();
}

std::wstring SerialPage::firstPort() {
    return link().hasOpenSerialPort() ? link().currentPort() : remembered_.name;
}

long SerialPage::firstRate() {
    return link().hasOpenSerialPort() ? SerialForm::firstRate() : remembered_.rate;
}

void SerialPage::connected(const std::wstring& port, long rate) {
    savePort(application_, {port, rate});
}

}  // namespace kel::connect
