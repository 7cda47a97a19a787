#pragma once
// Owns a Windows socket, and the use of the socket library for as long.

#include <winsock2.h>

#include "com/unique_handle.h"

namespace kel::bench {

// The use of the socket library. Throws com::Error when it does not start.
class SocketLibrary {
public:
    SocketLibrary();
    ~SocketLibrary();
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

struct SocketTraits {
    using Type = SOCKET;
    static Type none() { return INVALID_SOCKET; }
    static void close(Type socket) { closesocket(socket); }
};
using Socket = com::UniqueHandle<SocketTraits>;

}  // namespace kel::bench
