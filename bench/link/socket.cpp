#include "bench/link/socket.h"

#include "com/error.h"

namespace kel::bench {

SocketLibrary::SocketLibrary() {
    WSADATA data;
    const int error = WSAStartup(MAKEWORD(2, 2), &data);
    if (error != 0) throw com::Error(HRESULT_FROM_WIN32(error));
}

SocketLibrary::~SocketLibrary() {
    WSACleanup();
}

}  // namespace kel::bench
