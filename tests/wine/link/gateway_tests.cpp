#include "bench/instrument/gateway.h"
#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {
namespace {

// Connects through a gateway while another connection stands.
class GatewayTest : public ConnectedStreamTest {
protected:
    void SetUp() override {
        ConnectedStreamTest::SetUp();
        ASSERT_EQ(stream.As(&network), S_OK);
        arrive("old");
    }
    void TearDown() override {
        network.Reset();
        ConnectedStreamTest::TearDown();
    }

    // While the stream connects the gateway hears a line and does what a test says.
    template <class Answer>
    void connectThrough(const wchar_t* host, Answer&& answer) {
        window.post([&] {
            gateway.vanish();
            gateway.accept();
            heard.clear();
            while (!heard.ends_with('\n'))
                heard += gateway.receive(1);
            answer();
        });
        VARIANT_BOOL done = VARIANT_FALSE;
        EXPECT_EQ(
            network->ConnectTo(Bstr(std::wstring_view(host)).get(), gateway.port().get(), &done),
            S_OK);
        error = GetLastError();
        connected = done == VARIANT_TRUE;
    }

    bool passwordRequired() {
        VARIANT_BOOL required = 1;
        EXPECT_EQ(network->get_PasswordRequired(&required), S_OK);
        return required == VARIANT_TRUE;
    }

    std::string connection() {
        Bstr connection;
        EXPECT_EQ(network->get_ConnectionString(connection.put()), S_OK);
        return text(connection);
    }

    TcpPeer gateway;
    TestWindow window;
    ComPtr<INetworkStream2> network;
    std::string heard;
    DWORD error = 0;
    bool connected = false;
};

TEST_F(GatewayTest, ItsAnswerDecidesWhetherAConnectionIsMade) {
    const std::string old = connection();
    const struct {
        std::string answer;
        bool drops;
        DWORD error;
        bool passwordRequired;
    } failures[] = {
        {"PASSWORD\r\n", true, ERROR_INVALID_PASSWORD, true},
        {"REFUSED\r\n", true, WSAECONNREFUSED, false},
        {"PASSWORD\n", false, ERROR_INVALID_PASSWORD, true},
        {"WHO ARE YOU\r\n", false, ERROR_BAD_NET_RESP, false},
        {std::string(600, 'R'), false, ERROR_BAD_NET_RESP, false},
        {"READY\r", true, WSAECONNRESET, false},
        {"", true, WSAECONNRESET, false},
    };
    for (const auto& row : failures) {
        connectThrough(L"gate:127.0.0.1", [&] {
            if (!row.answer.empty()) gateway.send(row.answer);
            if (row.drops) gateway.vanish();
        });
        EXPECT_FALSE(connected) << row.answer;
        EXPECT_EQ(error, row.error) << row.answer;
        EXPECT_EQ(passwordRequired(), row.passwordRequired) << row.answer;
        EXPECT_EQ(connection(), old) << row.answer;
    }
    EXPECT_EQ(waitFor(L"old", 0), (Outcome{true, "old"})) << "what had come stays";
    peer.send("still here");
    EXPECT_EQ(waitFor(L"here", 3600000), (Outcome{true, "still here"}));

    // The answer comes in pieces, and the instrument's first bytes with it.
    connectThrough(L"GATE:127.0.0.1", [&] {
        gateway.send("REA");
        window.post([&] { gateway.send("DY\r\n\r\n>"); });
    });
    EXPECT_TRUE(connected);
    EXPECT_EQ(waitFor(L">", 3600000), (Outcome{true, "\r\n>"}));
    EXPECT_EQ(connection(), "GATE:127.0.0.1:" + text(gateway.port()));
    EXPECT_FALSE(passwordRequired());
}

TEST_F(GatewayTest, ThePasswordIsToldAsItWasPut) {
    const GatewayOptions options{"open sesame", GatewayFault::kNone};
    const auto answer = [&] {
        const auto reply = Gateway(options).feed(heard);
        gateway.send(reply.answer);
        if (reply.then == Gateway::Then::kClose) gateway.vanish();
    };
    connectThrough(L"gate:127.0.0.1", answer);
    EXPECT_EQ(heard, "KELGATE \r\n");
    EXPECT_TRUE(passwordRequired());

    EXPECT_EQ(network->put_Password(Bstr(L"open sesame").get()), S_OK);
    for (const wchar_t bad : {L'\r', L'\n', L'\0'}) {
        EXPECT_EQ(network->put_Password(Bstr(std::wstring(L"open") + bad).get()), E_INVALIDARG);
    }
    connectThrough(L"gate:127.0.0.1", answer);
    EXPECT_TRUE(connected);
    EXPECT_FALSE(passwordRequired());

    EXPECT_EQ(network->put_Password(nullptr), S_OK);
    connectThrough(L"gate:127.0.0.1", answer);
    EXPECT_TRUE(passwordRequired());
    // An attempt that reaches no gateway forgets what the last one said.
    VARIANT_BOOL done = VARIANT_TRUE;
    EXPECT_EQ(network->ConnectTo(Bstr(L"gate:").get(), gateway.port().get(), &done), S_OK);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(WSAHOST_NOT_FOUND));
    EXPECT_EQ(done, VARIANT_FALSE);
    EXPECT_FALSE(passwordRequired());
}

TEST_F(GatewayTest, CloseEndsTheAttempt) {
    connectThrough(L"gate:127.0.0.1", [&] { window.post([&] { network->Close(); }); });
    EXPECT_FALSE(connected);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_OPERATION_ABORTED));
}

TEST_F(GatewayTest, OneThatDoesNotAnswerTimesOut) {
    const TimeScale scale(L"100");
    connect();
    ASSERT_EQ(stream.As(&network), S_OK);
    connectThrough(L"gate:127.0.0.1", [] {});
    EXPECT_FALSE(connected);
    EXPECT_EQ(error, static_cast<DWORD>(WSAETIMEDOUT));
    EXPECT_TRUE(isOpen());
}

}  // namespace
}  // namespace kel::bench::test
