#include "hosts/shared/connection.h"

#include <winsock2.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "com/text.h"
#include "com/variant.h"
#include "hosts/shared/create.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/address.h"
#include "hosts/shared/model/failure.h"
#include "interfaces/link_classes.h"

namespace kel::host {
namespace {

const ComponentNames kSerialStream{"the serial stream of the instrument link",
                                   "register the link's library with regsvr32"};
const ComponentNames kNetworkStream{"the network stream of the instrument link",
                                    "register the link's library with regsvr32"};

struct Reason {
    DWORD code;
    const char* text;
};

// The platform's words for these speak of files or are missing.
constexpr Reason kReasons[] = {
    {ERROR_SUCCESS, "the link does not tell why"},
    {ERROR_FILE_NOT_FOUND, "there is no such port"},
    {ERROR_PATH_NOT_FOUND, "there is no such port"},
    {ERROR_INVALID_NAME, "this is no name of a port"},
    {ERROR_ACCESS_DENIED, "the port is busy: another program uses it, or it may not be used"},
    {ERROR_SHARING_VIOLATION, "the port is busy: another program uses it"},
    {ERROR_LOCK_VIOLATION, "the port is busy: another program uses it"},
    {ERROR_INVALID_PASSWORD, "the gateway wants another password"},
    {ERROR_BAD_NET_RESP, "what answers there is no gateway"},
    {WSAECONNREFUSED, "connection refused: nothing listens there, or a gateway refuses"},
    {WSAECONNRESET, "the other end closed the connection"},
    {WSAHOST_NOT_FOUND, "unknown host"},
    {WSANO_DATA, "unknown host"},
    {WSATRY_AGAIN, "unknown host, or no name server answers"},
    {WSAETIMEDOUT, "no answer"},
    {WSAEHOSTUNREACH, "the host cannot be reached"},
    {WSAENETUNREACH, "the network cannot be reached"},
};

std::string reasonText(DWORD code) {
    const auto* known = std::ranges::find(kReasons, code, &Reason::code);
    std::string text = known != std::end(kReasons) ? known->text : systemText(code);
    return code == ERROR_SUCCESS ? text : text + " (error " + std::to_string(code) + ")";
}

// Calls a member that opens a stream. Throws Failure, with the thread's last error, when it says
// that it could not.
template <class Stream, class Open>
void open(const com::ComPtr<Stream>& stream, const std::string& where, Open&& call) {
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    SetLastError(ERROR_SUCCESS);
    const HRESULT code = call(&isOpen);
    const DWORD error = GetLastError();
    com::check(code, stream);
    if (com::isTrue(isOpen)) return;
    throw Failure(ExitCode::kNoConnection, "no connection: " + where + ": " + reasonText(error));
}

com::ComPtr<IKelStream> connectTo(const std::string& tcp) {
    const Address address = parseAddress(tcp);
    auto stream = create<INetworkStream>(link::kNetworkStreamClass, kNetworkStream);
    const com::Bstr host(address.host, CP_UTF8);
    const com::Bstr port(address.port, CP_UTF8);
    open(stream, tcp,
         [&](VARIANT_BOOL* isOpen) { return stream->ConnectTo(host.get(), port.get(), isOpen); });
    return stream;
}

com::ComPtr<IKelStream> openPort(const std::string& port, long baudRate) {
    auto stream = create<ISerialStream>(link::kSerialStreamClass, kSerialStream);
    if (port.empty()) return stream;
    const com::Bstr name(port, CP_UTF8);
    open(stream, port,
         [&](VARIANT_BOOL* isOpen) { return stream->OpenPort(name.get(), baudRate, isOpen); });
    return stream;
}

}  // namespace

com::ComPtr<IKelStream> openStream(const Target& target) {
    if (target.tcp.empty()) return openPort(target.port, target.baudRate);
    return connectTo(target.tcp);
}

}  // namespace kel::host
