#pragma once
// How network streams get their peer.

#include "tests/wine/support/bench_link.h"
#include "tests/wine/support/tcp_peer.h"
#include "tests/wine/support/test_window.h"

namespace kel::bench::test {

inline bool connectTo(INetworkStream& stream, const Bstr& port) {
    VARIANT_BOOL connected = VARIANT_FALSE;
    EXPECT_EQ(stream.ConnectTo(Bstr(L"127.0.0.1").get(), port.get(), &connected), S_OK);
    return connected == VARIANT_TRUE;
}

}  // namespace kel::bench::test
