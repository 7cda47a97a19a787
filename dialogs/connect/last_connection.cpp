#include "dialogs/connect/last_connection.h"

#include <algorithm>

#include "com/port.h"
#include "com/text.h"
#include "com/variant.h"
#include "dialogs/connect/connection_store.h"
#include "dialogs/connect/network_link.h"
#include "dialogs/connect/serial_link.h"
#include "dialogs/connect/serial_page.h"
#include "dialogs/connect/session_store.h"
#include "settings/model/stored_list.h"

namespace kel::connect {
namespace {

[[noreturn]] void failWith(const std::wstring& reason, HRESULT code = E_FAIL) {
    throw com::Error(code, reason);
}

void connectSerial(const com::ComPtr<IKelCommunicator>& link, const std::wstring& application) {
    const RememberedPort port = loadPort(application);
    if (port.name.empty()) failWith(L"No serial port is remembered for '" + application + L"'");
    SerialLink serial(link);
    serial.createStream();
    if (serial.hasOpenSerialPort() && serial.isCurrent(port.name)) {
        serial.setRate(port.rate, kSessionRules);
    } else if (const auto error = serial.connect(port.name, port.rate)) {
        // A link need not tell why; the failure stays one.
        failWith(sessionFailureText(port.name, *error),
                 *error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(*error));
    }
}

void connectNetwork(const com::ComPtr<IKelCommunicator>& link) {
    const auto connections = loadConnections();
    if (connections.empty()) failWith(L"No network connection is remembered");
    const NetworkConnection& last = connections.front();
    NetworkLink network(link);
    network.createStream();
    if (network.isConnected(last) || network.connect(last)) return;
    failWith(L"Failed to connect to " + last.address + L" : " + last.port +
             (network.wantsPassword() ? L": the gateway wants a password" : L""));
}

void rememberNetwork(const std::wstring& name) {
    const std::size_t colon = name.rfind(L':');
    if (colon == std::wstring::npos) failWith(L"The link's network connection has no port");
    const std::wstring address = name.substr(0, colon);
    const std::wstring port = name.substr(colon + 1);
    const std::vector<NetworkConnection> stored = loadConnections();
    const auto known = std::ranges::find_if(stored, [&](const NetworkConnection& each) {
        return com::sameName(each.address, address) && com::sameName(each.port, port);
    });
    ConnectionList list(stored);
    std::size_t index = static_cast<std::size_t>(known - stored.begin());
    if (known == stored.end()) {
        index = list.all().size();
        // What is remembered without it would be another instrument.
        if (com::narrow(name).size() + 1 >= settings::kLongestText)
            failWith(L"The link's network connection is too long to be remembered");
        list.add({.name = name, .address = address, .port = port});
    }
    list.use(index);
    saveConnections(list.stored());
}

}  // namespace

void connectAsLastTime(const com::ComPtr<IKelCommunicator>& link, const std::wstring& application) {
    const auto last =
        static_cast<SessionOption>(loadSession(application).lastConnection.value_or(0));
    if (last == SessionOption::Serial) return connectSerial(link, application);
    if (last == SessionOption::Network) return connectNetwork(link);
    failWith(L"No connection is remembered for '" + application + L"'");
}

void rememberConnection(const com::ComPtr<IKelCommunicator>& link,
                        const std::wstring& application) {
    const auto port = com::portOf(link);
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    if (port) com::check(port->get_IsOpen(&isOpen), port);
    if (!com::isTrue(isOpen)) failWith(L"The link has no open port");
    com::Bstr name;
    com::check(port->get_ConnectionString(name.put()), port);

    com::ComPtr<INetworkStream> network;
    if (SUCCEEDED(port.As(&network))) {
        rememberNetwork(std::wstring(name.view()));
        saveSession(application, SessionOption::Network);
        return;
    }
    long rate = 0;
    com::check(port->get_BaudRate(&rate), port);
    savePort(application, {shownName(name.view()), rate});
    saveSession(application, SessionOption::Serial);
}

}  // namespace kel::connect
