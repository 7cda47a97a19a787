#include "com/variant.h"
#include "tests/wine/link/connected_stream.h"
#include "tests/wine/support/refusals.h"

namespace kel::bench::test {
namespace {

using StreamTest = ConnectedStreamTest;

TEST_F(StreamTest, ABufferGoesOutAsItCameIn) {
    VARIANT_BOOL written = VARIANT_FALSE;
    EXPECT_EQ(stream->WriteByte(0xFE, 0, &written), S_OK);
    EXPECT_EQ(peer.receive(1), "\xFE");
    arrive({"\0\1\xFF", 3});
    com::Variant data;
    EXPECT_EQ(stream->ReadBuffer(3, 0, data.put(), &written), S_OK);
    VARIANT reference;
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = const_cast<VARIANT*>(&data.get());
    EXPECT_EQ(stream->WriteBuffer(reference, 0, &written), S_OK);
    EXPECT_EQ(peer.receive(3), std::string("\0\1\xFF", 3));
    EXPECT_EQ(stream->WriteBuffer(com::Variant(5L).get(), 0, &written), E_INVALIDARG);
    EXPECT_EQ(written, VARIANT_FALSE);
}

TEST_F(StreamTest, AFailedConnectionLeavesThePresentOneAndTellsWhy) {
    Bstr closedPort;
    {
        const TcpPeer gone;
        closedPort = gone.port();
    }
    VARIANT_BOOL connected = VARIANT_TRUE;
    EXPECT_EQ(stream->ConnectTo(Bstr(L"127.0.0.1").get(), closedPort.get(), &connected), S_OK);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(WSAECONNREFUSED));
    EXPECT_EQ(connected, VARIANT_FALSE);
    EXPECT_EQ(stream->ConnectTo(nullptr, closedPort.get(), &connected), S_OK);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(WSAHOST_NOT_FOUND));
    EXPECT_EQ(connected, VARIANT_FALSE);

    arrive("still here");
    EXPECT_TRUE(isOpen());
    TcpPeer next;
    EXPECT_TRUE(connectTo(*stream.Get(), next.port()));
    EXPECT_EQ(waitFor(L"still", 0), (Outcome{false, ""})) << "a new connection starts empty";
}

TEST(LinkTest, ThereAreNoBinaryPackets) {
    const auto communicator = create<IKelCommunicator>(kCommunicatorClass);
    ComPtr<IBinaryCommunicator> binary;
    ASSERT_EQ(communicator.As(&binary), S_OK);
    kel::test::expectNullPointersRefused(binary.Get());
    ComPtr<IBinaryPacket> packet;
    EXPECT_EQ(binary->CreatePacket(&packet), E_NOTIMPL);
}

}  // namespace
}  // namespace kel::bench::test
