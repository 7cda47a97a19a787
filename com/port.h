#pragma once
// The port of an instrument link.

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::com {

// Fetched anew for each use: whoever is called meanwhile may replace it. Null where there is none,
// and without a link. Throws when the link fails.
inline ComPtr<IKelStream> portOf(const ComPtr<IKelCommunicator>& link) {
    ComPtr<IKelStream> port;
    if (link) check(link->get_Port(&port), link);
    return port;
}

// The same where there has to be one.
inline ComPtr<IKelStream> presentPortOf(const ComPtr<IKelCommunicator>& link) {
    auto port = portOf(link);
    if (!port) throw Error(E_POINTER, L"The link has no port", __uuidof(IKelCommunicator));
    return port;
}

}  // namespace kel::com
