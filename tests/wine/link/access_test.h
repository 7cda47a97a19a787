#pragma once
// An access object's surroundings: a link whose port leads to the virtual instrument.

#include <optional>

#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {

class AccessTest : public testing::Test {
protected:
    void TearDown() override {
        link.Reset();
        stream.Reset();
    }

    // The instrument's time and that of the objects made afterwards run so many times faster.
    void connect(InstrumentOptions options = {}, double instrumentScale = 50,
                 const wchar_t* linkScale = nullptr) {
        TearDown();
        scale.reset();
        if (linkScale) scale.emplace(linkScale);
        server.emplace(std::move(options), instrumentScale);
        reach(server->port());
    }

    // Makes a link that reaches whoever listens on a port.
    void reach(const Bstr& port) {
        stream = create<INetworkStream>(link::kNetworkStreamClass);
        ASSERT_TRUE(connectTo(*stream.Get(), port));
        stream->put_EchoWindow(window.number());
        link = create<IKelCommunicator>(kCommunicatorClass);
        link->put_Port(stream.Get());
    }

    long echoWindow() {
        long number = 1;
        EXPECT_EQ(stream->get_EchoWindow(&number), S_OK);
        return number;
    }

    TestWindow window;
    std::optional<TimeScale> scale;
    std::optional<InstrumentServer> server;
    ComPtr<INetworkStream> stream;
    ComPtr<IKelCommunicator> link;
};

}  // namespace kel::bench::test
