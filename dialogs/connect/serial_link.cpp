#include "dialogs/connect/serial_link.h"

#include <utility>

#include "com/creation.h"
#include "com/port.h"
#include "com/text.h"
#include "com/variant.h"
#include "dialogs/connect/model/serial_ports.h"
#include "interfaces/link_classes.h"

namespace kel::connect {

void SerialLink::createStream() {
    stream_ = com::createStarted<ISerialStream>(link::kSerialStreamClass);
}

const com::ComPtr<ISerialStream>& SerialLink::stream() const {
    if (!stream_)
        throw com::Error(E_POINTER, L"The link's serial port component is not installed",
                         __uuidof(ISerialStream));
    return stream_;
}

std::wstring SerialLink::currentPort() const {
    const auto present = com::portOf(link_);
    com::Bstr connection;
    if (present) com::check(present->get_ConnectionString(connection.put()), present);
    return shownName(connection.view());
}

std::optional<long> SerialLink::currentRate() const {
    const auto present = com::portOf(link_);
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    if (present) com::check(present->get_IsOpen(&isOpen), present);
    if (!com::isTrue(isOpen)) return std::nullopt;
    long rate = 0;
    com::check(present->get_BaudRate(&rate), present);
    return rate;
}

bool SerialLink::hasOpenSerialPort() const {
    const auto present = com::portOf(link_);
    com::ComPtr<ISerialStream> serial;
    if (!present || FAILED(present.As(&serial))) return false;
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    com::check(present->get_IsOpen(&isOpen), present);
    return com::isTrue(isOpen);
}

bool SerialLink::exists(const std::wstring& port) const {
    VARIANT_BOOL exists = VARIANT_FALSE;
    com::check(stream()->PortExists(com::Bstr(port).get(), &exists), stream());
    return com::isTrue(exists);
}

bool SerialLink::opens(const std::wstring& port) const {
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    com::check(stream()->OpenPort(com::Bstr(port).get(), kDefaultBaudRate, &isOpen), stream());
    if (!com::isTrue(isOpen)) return false;
    com::check<IKelStream>(stream()->Close(), stream().Get());
    return true;
}

bool SerialLink::isCurrent(const std::wstring& port) const {
    return isSamePort(currentPort(), port);
}

void SerialLink::setRate(long rate, const SerialRules& rules) {
    const auto present = com::portOf(link_);
    if (!present) throw com::Error(E_POINTER, L"The link has no port any more");
    long before = 0;
    if (!rules.putsSameRate) com::check(present->get_BaudRate(&before), present);
    if (rules.putsSameRate || before != rate) com::check(present->put_BaudRate(rate), present);
}

std::optional<DWORD> SerialLink::connect(const std::wstring& name, long rate) {
    const com::Bstr opened(openedName(name));
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    const com::ComPtr<ISerialStream> fresh = stream();
    SetLastError(ERROR_SUCCESS);
    const HRESULT code = fresh->OpenPort(opened.get(), rate, &isOpen);
    // Before anything else can change it.
    const DWORD error = GetLastError();
    com::check(code, fresh);
    if (!com::isTrue(isOpen)) return error;
    if (isGivenUp_) {
        fresh->Close();
        return ERROR_CANCELLED;
    }

    try {
        if (const auto present = com::portOf(link_)) com::check(present->Close(), present);
        com::check(link_->put_Port(fresh.Get()), link_);
    } catch (...) {
        // Nobody would close it later.
        fresh->Close();
        throw;
    }
    return std::nullopt;
}

}  // namespace kel::connect
