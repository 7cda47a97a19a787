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
        reach(startInstrument(std::move(options), instrumentScale));
    }

    // Gives the port of a new instrument.
    virtual Bstr startInstrument(InstrumentOptions options, double instrumentScale) {
        server.emplace(std::move(options), instrumentScale);
        return server->port();
    }

    // A new object of a class of the link.
    virtual ComPtr<IDispatch> newObject(REFCLSID identifier) {
        return create<IDispatch>(identifier);
    }

    // Makes a link that reaches whoever listens on a port.
    void reach(const Bstr& port) {
        com::check(newObject(link::kNetworkStreamClass).As(&stream));
        ASSERT_TRUE(connectTo(*stream.Get(), port));
        stream->put_EchoWindow(window.number());
        com::check(newObject(kCommunicatorClass).As(&link));
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
