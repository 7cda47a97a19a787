#pragma once
// A network stream with its peer, for tests of what all streams do.

#include "tests/wine/support/bench_link.h"
#include "tests/wine/support/tcp_peer.h"
#include "tests/wine/support/test_window.h"

namespace kel::bench::test {

inline bool connectTo(INetworkStream& stream, const Bstr& port) {
    VARIANT_BOOL connected = VARIANT_FALSE;
    EXPECT_EQ(stream.ConnectTo(Bstr(L"127.0.0.1").get(), port.get(), &connected), S_OK);
    return connected == VARIANT_TRUE;
}

struct Outcome {
    bool result;
    std::string text;
    bool operator==(const Outcome&) const = default;
};

class ConnectedStreamTest : public testing::Test {
protected:
    void SetUp() override { connect(); }

    void TearDown() override { stream.Reset(); }

    void connect() {
        stream = create<INetworkStream>(link::kNetworkStreamClass);
        ASSERT_TRUE(connectTo(*stream.Get(), peer.port()));
        peer.accept();
    }

    // Makes the peer say something and waits until the stream has it in its read buffer.
    void arrive(std::string_view bytes) {
        peer.send(bytes);
        long waiting = 0;
        while (waiting < static_cast<long>(bytes.size())) {
            ASSERT_EQ(stream->get_BytesInReadBuffer(&waiting), S_OK);
        }
    }

    Outcome waitFor(const wchar_t* wanted, long timeout, const wchar_t* stop = L"") {
        Bstr response;
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(
            stream->WaitForString(Bstr(std::wstring_view(wanted)).get(), timeout,
                                  Bstr(std::wstring_view(stop)).get(), response.put(), &result),
            S_OK);
        return {result == VARIANT_TRUE, text(response)};
    }

    bool isOpen() {
        VARIANT_BOOL open = VARIANT_FALSE;
        EXPECT_EQ(stream->get_IsOpen(&open), S_OK);
        return open == VARIANT_TRUE;
    }

    TcpPeer peer;
    ComPtr<INetworkStream> stream;
};

}  // namespace kel::bench::test
