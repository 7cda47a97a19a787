#include "script/line_sink.h"

#include "com/port.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::script {
namespace {

constexpr unsigned char kCarriageReturn = 0x0D;

// The stream's own time-out for writing.
constexpr long kStreamTimeout = 0;

// The time in milliseconds that an instrument needs for a line, by the rate of its line.
long pauseAfterLine(long baudRate) {
    if (baudRate >= 38400) return 150;
    if (baudRate >= 9600) return 250;
    if (baudRate >= 2400) return 500;
    return 1200;
}

// SDI-12 commands are upper case in the instrument's one-byte characters.
com::Bstr sdi12Text(BSTR text) {
    std::string bytes = com::narrow(text);
    CharUpperBuffA(bytes.data(), static_cast<DWORD>(bytes.size()));
    return com::Bstr(std::string_view(bytes));
}

bool writeText(const com::ComPtr<IKelStream>& port, BSTR text) {
    VARIANT_BOOL written = VARIANT_FALSE;
    com::check(port->WriteString(text, VARIANT_FALSE, kStreamTimeout, &written), port);
    return com::isTrue(written);
}

bool writeCarriageReturn(const com::ComPtr<IKelStream>& port) {
    VARIANT_BOOL written = VARIANT_FALSE;
    com::check(port->WriteByte(kCarriageReturn, kStreamTimeout, &written), port);
    return com::isTrue(written);
}

}  // namespace

bool sendLine(const com::ComPtr<IKelCommunicator>& communicator, BSTR text,
              const std::function<void()>& onWritten) {
    const com::ComPtr<IKelStream> port = com::portOf(communicator);
    if (!port) return false;
    com::check(port->ClearReadBuffer(), port);

    VARIANT_BOOL sdi12 = VARIANT_FALSE;
    com::check(communicator->get_SDI12Mode(&sdi12), communicator);
    const bool written =
        com::isTrue(sdi12) ? writeText(port, sdi12Text(text).get()) : writeText(port, text);
    if (!written || !writeCarriageReturn(port)) return false;
    onWritten();

    long baudRate = 0;
    com::check(port->get_BaudRate(&baudRate), port);
    com::check(port->Sleep(pauseAfterLine(baudRate)), port);
    return true;
}

}  // namespace kel::script
