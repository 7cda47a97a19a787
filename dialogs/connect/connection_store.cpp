#include "dialogs/connect/connection_store.h"

#include "com/text.h"
#include "settings/settings_list.h"
#include "settings/vocabulary.h"

namespace kel::connect {

std::vector<NetworkConnection> loadConnections() {
    std::vector<NetworkConnection> connections;
    for (const auto& entry :
         settings::readList(settings::connections::kKey, settings::connections::kFields)) {
        connections.push_back({.name = com::widen(entry[0]),
                               .address = com::widen(entry[1]),
                               .port = com::widen(entry[2])});
    }
    return connections;
}

void saveConnections(const std::vector<NetworkConnection>& connections) {
    std::vector<settings::ListEntry> entries;
    for (const NetworkConnection& each : connections)
        entries.push_back(
            {com::narrow(each.name), com::narrow(each.address), com::narrow(each.port)});
    settings::writeList(settings::connections::kKey, settings::connections::kFields, entries);
}

}  // namespace kel::connect
