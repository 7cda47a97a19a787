#pragma once
// The link's stream over a TCP connection.

#include "bench/link/stream_object.h"
#include "bench/link/tcp_connection.h"

namespace kel::bench {

class NetworkStream final : public StreamObject<NetworkStream, INetworkStream, TcpConnection> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.NetworkStream.1"};

    // The thread's last error tells why no connection was made.
    STDMETHODIMP ConnectTo(BSTR address, BSTR port, VARIANT_BOOL* result) override;

private:
    int connect(const std::wstring& address, const std::wstring& port);
};

}  // namespace kel::bench
