// How connections are made, and what becomes of those that are not.
#include <winsock2.h>

#include <algorithm>

#include "tests/link/kit.h"

namespace kel::conformance {
namespace {

constexpr int kPortNumbers = 250;

std::wstring withoutColon(std::wstring name) {
    name.erase(std::remove(name.begin(), name.end(), L':'), name.end());
    return name;
}

const std::wstring& namedPort(const Link& link) {
    if (link.setup().serialPort.empty()) throw NotTried("no serial port was named (--serial)");
    return link.setup().serialPort;
}

bool exists(ISerialStream& stream, const std::wstring& port) {
    VARIANT_BOOL exists = VARIANT_FALSE;
    succeeded(stream.PortExists(Bstr(std::wstring_view(port)).get(), &exists), "PortExists");
    return flag(exists, "PortExists");
}

// Whether it opened; `error` gets the thread's last error.
bool opens(ISerialStream& stream, const std::wstring& port, long baudRate, DWORD& error) {
    VARIANT_BOOL open = VARIANT_TRUE;
    const Bstr name{std::wstring_view(port)};
    SetLastError(ERROR_SUCCESS);
    const HRESULT code = stream.OpenPort(name.get(), baudRate, &open);
    error = GetLastError();
    succeeded(code, "OpenPort " + shown(port));
    return flag(open, "OpenPort");
}

// The name of a port that the machine has not: the platform's own word for it.
std::wstring absentPort() {
    for (int number = kPortNumbers; number > 0; --number) {
        const std::wstring name = L"COM" + std::to_wstring(number);
        wchar_t target[MAX_PATH];
        if (QueryDosDeviceW(name.c_str(), target, MAX_PATH) == 0) return name;
    }
    throw NotTried("the machine has all ports");
}

void knowsWhichPortsThereAre(const Link& link) {
    const std::wstring port = withoutColon(namedPort(link));
    const auto stream = link.serialStream();
    for (const std::wstring& name : {port, port + L":"}) {
        expect(exists(*stream.Get(), name), "PortExists " + shown(name) + " to be true",
               "it is false");
        const Wire user = link.wire();
        expect(exists(*stream.Get(), name),
               "PortExists " + shown(name) + " to be true while somebody uses it", "it is false");
    }
    for (const std::wstring& name : {absentPort(), absentPort() + L":"}) {
        expect(!exists(*stream.Get(), name), "PortExists " + shown(name) + " to be false",
               "it is true");
    }
}

void opensWithAndWithoutColon(const Link& link) {
    const std::wstring port = withoutColon(namedPort(link));
    for (const std::wstring& name : {port, port + L":"}) {
        const auto serial = link.serialStream();
        const Wire wire{serial};
        DWORD error = 0;
        const bool open = opens(*serial.Get(), name, link.setup().baudRate, error);
        expect(open && wire.isOpen(), "OpenPort " + shown(name) + " to open it",
               "it did not, last error " + std::to_string(error));
        expect(com::sameName(withoutColon(wire.connection()), port),
               "ConnectionString to name " + shown(port), "it is " + shown(wire.connection()));
        long rate = 0;
        succeeded(wire->get_BaudRate(&rate), "BaudRate");
        expect(rate == link.setup().baudRate, "the rate that it was opened with",
               "BaudRate is " + std::to_string(rate));
        succeeded(wire->Close(), "Close");
    }
}

void leavesThePresentPortUsable(const Link& link) {
    const WiredLink present(link);
    const std::wstring absent = absentPort();
    const auto other = link.serialStream();
    DWORD error = ERROR_SUCCESS;
    expect(!opens(*other.Get(), absent, link.setup().baudRate, error),
           "OpenPort " + shown(absent) + " to be false", "it is true");
    expect(error != ERROR_SUCCESS, "the thread's last error to tell why OpenPort is false",
           "it is 0");
    expect(!Wire{other}.isOpen(), "IsOpen to be false then", "it is true");
    present.wire.expectEchoes("on the link's port, after another stream did not open");
}

void setsTheLine(const Link& link) {
    const Wire wire = link.wire();
    ComPtr<ISerialStream> serial;
    succeeded(wire.stream.As(&serial), "QueryInterface");
    const struct {
        const wchar_t* parity;
        bool taken;
    } rows[] = {{L"NONE", true}, {L"NO SUCH PARITY", false}};
    for (const auto& [parity, taken] : rows) {
        VARIANT_BOOL result = VARIANT_FALSE;
        const std::string call = std::string("SetLineSettings ") + shown(parity);
        succeeded(serial->SetLineSettings(Bstr(std::wstring_view(parity)).get(), 8, 1, &result),
                  call);
        expect(flag(result, call) == taken, call + (taken ? " to be true" : " to be false"),
               "it is not");
    }
    for (const long rate : {19200L, link.setup().baudRate}) {
        long present = 0;
        succeeded(wire->put_BaudRate(rate), "putting BaudRate");
        succeeded(wire->get_BaudRate(&present), "BaudRate");
        expect(present == rate, "BaudRate to be " + std::to_string(rate),
               "it is " + std::to_string(present));
    }
}

// A port of this machine on which nobody listens.
std::wstring deafPort() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    const bool bound = bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    closesocket(socket);
    if (!bound) throw NotTried("this machine gives no port");
    return std::to_wstring(ntohs(address.sin_port));
}

// Hosts know by it whether a stream is connected where they want to be.
void namesItsConnection(const Link& link) {
    const Wire wire = link.wire();
    const std::wstring wanted = link.setup().host + L":" + link.setup().port;
    expect(com::sameName(wire.connection(), wanted), "ConnectionString to be " + shown(wanted),
           "it is " + shown(wire.connection()));
}

void keepsThePresentConnection(const Link& link) {
    const Wire wire = link.wire();
    ComPtr<INetworkStream> network;
    succeeded(wire.stream.As(&network), "QueryInterface");
    const std::wstring before = wire.connection();
    VARIANT_BOOL result = VARIANT_TRUE;
    succeeded(network->ConnectTo(Bstr(L"127.0.0.1").get(), Bstr(deafPort()).get(), &result),
              "ConnectTo where nobody listens");
    expect(!flag(result, "ConnectTo"), "ConnectTo where nobody listens to be false", "it is true");
    expect(wire.isOpen() && wire.connection() == before,
           "the connection to " + shown(before) + " to be kept",
           "it is now to " + shown(wire.connection()));
    if (link.setup().echoing) wire.expectEchoes("on the connection that is kept");
}

void wantsNoPasswordUnasked(const Link& link) {
    const auto network = link.networkStream();
    ComPtr<INetworkStream2> guarded;
    if (FAILED(network.As(&guarded))) throw NotTried("the link has no INetworkStream2");
    succeeded(guarded->put_Password(Bstr(L"secret").get()), "putting Password");
    VARIANT_BOOL connected = VARIANT_TRUE, required = VARIANT_TRUE;
    succeeded(network->ConnectTo(Bstr(L"127.0.0.1").get(), Bstr(deafPort()).get(), &connected),
              "ConnectTo where nobody listens");
    succeeded(guarded->get_PasswordRequired(&required), "PasswordRequired");
    expect(!flag(required, "PasswordRequired"),
           "PasswordRequired to be false where no gateway asked for one", "it is true");
}

constexpr Rule kConnectionRules[] = {
    {"PortExists tells which ports there are", Scope::kSerial, knowsWhichPortsThereAre},
    {"OpenPort takes a name with and without a colon", Scope::kSerial, opensWithAndWithoutColon},
    {"OpenPort of an absent port is false, tells why and disturbs nobody", Scope::kSerial,
     leavesThePresentPortUsable},
    {"SetLineSettings and BaudRate set the line", Scope::kSerial, setsTheLine},
    {"ConnectionString is the address and the port", Scope::kNetwork, namesItsConnection},
    {"ConnectTo where nobody listens is false and keeps the present connection", Scope::kNetwork,
     keepsThePresentConnection},
    {"PasswordRequired is about passwords only", Scope::kNetwork, wantsNoPasswordUnasked},
};

}  // namespace

std::span<const Rule> connectionRules() {
    return kConnectionRules;
}

}  // namespace kel::conformance
