#pragma once
// The list of network connections in the user's settings.

#include <vector>

#include "dialogs/connect/model/connection_list.h"

namespace kel::connect {

// Both are silent about what the store refuses, as the store is.
std::vector<NetworkConnection> loadConnections();
void saveConnections(const std::vector<NetworkConnection>& connections);

}  // namespace kel::connect
