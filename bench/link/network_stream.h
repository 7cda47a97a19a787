#pragma once
// The link's stream over a TCP connection, which may lead through a gateway.

#include <string>

#include "bench/link/stream_object.h"
#include "bench/link/tcp_connection.h"

namespace kel::bench {

class NetworkStream final
    : public StreamObject<NetworkStream, INetworkStream2, TcpConnection, INetworkStream> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.NetworkStream.1"};

    // Ends an attempt to connect as well.
    STDMETHODIMP Close() override;
    // The thread's last error tells why no connection was made. A host after "gate:" is reached
    // through a gateway.
    STDMETHODIMP ConnectTo(BSTR address, BSTR port, VARIANT_BOOL* result) override;

    STDMETHODIMP get_PasswordRequired(VARIANT_BOOL* required) override;
    // In the user's code page; one with a line end or a NUL is refused.
    STDMETHODIMP put_Password(BSTR password) override;

private:
    int connect(const std::wstring& address, const std::wstring& port);
    template <class Attempt>
    int finish(Attempt& attempt, Clock::Moment deadline);

    std::string password_;
    bool passwordRequired_ = false;
    int closings_ = 0;
};

}  // namespace kel::bench
