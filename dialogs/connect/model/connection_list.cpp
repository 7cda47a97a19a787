#include "dialogs/connect/model/connection_list.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kel::connect {

ConnectionList::ConnectionList(std::vector<NetworkConnection> stored)
    : connections_(std::move(stored)) {
    offerOne();
}

void ConnectionList::offerOne() {
    if (connections_.empty()) connections_.push_back({.isOffered = true});
}

std::vector<NetworkConnection> ConnectionList::stored() const {
    std::vector<NetworkConnection> stored = connections_;
    std::erase_if(stored, [](const NetworkConnection& each) { return each.isOffered; });
    return stored;
}

void ConnectionList::add(NetworkConnection connection) {
    connections_.push_back(std::move(connection));
}

void ConnectionList::replace(std::size_t index, NetworkConnection connection) {
    connection.isOffered = false;
    connections_.at(index) = std::move(connection);
}

void ConnectionList::remove(std::size_t index) {
    connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(index));
    offerOne();
}

void ConnectionList::use(std::size_t index) {
    connections_.at(index).isOffered = false;
    const auto used = connections_.begin() + static_cast<std::ptrdiff_t>(index);
    std::rotate(connections_.begin(), used, std::next(used));
}

void ConnectionList::setPassword(std::size_t index, std::wstring password) {
    connections_.at(index).password = std::move(password);
}

}  // namespace kel::connect
