#pragma once
// The named network connections, the one used last in front.

#include <cstddef>
#include <string>
#include <vector>

namespace kel::connect {

struct NetworkConnection {
    std::wstring name = L"Connection1";
    std::wstring address = L"127.0.0.1";
    std::wstring port = L"4444";
    std::wstring password = {};  // never stored
    // Nobody has made it: it stands in an empty list, so that there is something to start from.
    bool isOffered = false;

    // "Name - Address : Port"
    std::wstring description() const { return name + L" - " + address + L" : " + port; }
    bool operator==(const NetworkConnection&) const = default;
};

class ConnectionList {
public:
    explicit ConnectionList(std::vector<NetworkConnection> stored = {});

    const std::vector<NetworkConnection>& all() const { return connections_; }
    // What is to be stored: all but an offer.
    std::vector<NetworkConnection> stored() const;

    void add(NetworkConnection connection);
    void replace(std::size_t index, NetworkConnection connection);
    void remove(std::size_t index);
    // To the front: it was connected.
    void use(std::size_t index);
    // Keeps a password in memory.
    void setPassword(std::size_t index, std::wstring password);

private:
    void offerOne();

    std::vector<NetworkConnection> connections_;
};

}  // namespace kel::connect
