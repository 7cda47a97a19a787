#include <vector>

#include "com/variant.h"
#include "tests/wine/link/connected_stream.h"
#include "tests/wine/null_pointers.h"

namespace kel::bench::test {
namespace {

using StreamTest = ConnectedStreamTest;

struct WaitCase {
    const char* sent;
    const wchar_t* wanted;
    const wchar_t* stop;
    Outcome outcome;
    const char* rest;
};

TEST_F(StreamTest, WaitForStringTakesNoMoreThanItNeeds) {
    const WaitCase cases[] = {
        {"abc\r\n>rest", L"\r\n>", L"", {true, "abc\r\n>"}, "rest"},
        {"abc>OK", L"OK", L">", {false, "abc>"}, "OK"},
        {"OK\r\n>", L"OK", L">", {true, "OK"}, "\r\n>"},
        {"\r\n>", L"\r\n>", L">", {true, "\r\n>"}, ""},
        {"aab", L"ab", L"", {true, "aab"}, ""},
        {"abc", L"x", L"", {false, "abc"}, ""},
    };
    for (const WaitCase& example : cases) {
        SCOPED_TRACE(example.sent);
        arrive(example.sent);
        EXPECT_EQ(waitFor(example.wanted, 0, example.stop), example.outcome);
        EXPECT_EQ(waitFor(L"never", 0), (Outcome{false, example.rest}));
    }
}

TEST_F(StreamTest, ReadStringKnowsAllLineEnds) {
    arrive("one\r\ntwo\rthree\n\nfour\r\nrest");
    std::vector<Outcome> lines;
    do {
        Bstr line;
        VARIANT_BOOL complete = VARIANT_FALSE;
        ASSERT_EQ(stream->ReadString(0, line.put(), &complete), S_OK);
        lines.push_back({complete == VARIANT_TRUE, text(line)});
    } while (lines.back().result);
    EXPECT_EQ(lines, (std::vector<Outcome>{{true, "one"},
                                           {true, "two"},
                                           {true, "three"},
                                           {true, ""},
                                           {true, "four"},
                                           {false, "rest"}}));
}

TEST_F(StreamTest, WritesBytesTextsAndBuffers) {
    VARIANT_BOOL written = VARIANT_FALSE;
    EXPECT_EQ(stream->WriteString(Bstr(L"ver").get(), 1, 0, &written), S_OK);
    EXPECT_EQ(stream->WriteString(nullptr, VARIANT_FALSE, 0, &written), S_OK);
    EXPECT_EQ(stream->WriteByte(0xFE, 0, &written), S_OK);
    EXPECT_EQ(written, VARIANT_TRUE);
    EXPECT_EQ(peer.receive(5), "ver\r\xFE");

    // A buffer goes out as it came in.
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

TEST_F(StreamTest, ABreakArrivesAsANul) {
    ASSERT_EQ(stream->SendBreak(5), S_OK);
    EXPECT_EQ(peer.receive(1), std::string(1, '\0'));
}

TEST_F(StreamTest, AVanishedPeerEndsTheWaitAndClosesThePort) {
    arrive("last");
    peer.vanish();
    EXPECT_EQ(waitFor(L"never", 3600000), (Outcome{false, "last"}));
    EXPECT_FALSE(isOpen());
    Bstr connection;
    EXPECT_EQ(stream->get_ConnectionString(connection.put()), S_OK);
    EXPECT_EQ(text(connection), "");

    VARIANT_BOOL result = VARIANT_TRUE;
    unsigned char byte = 1;
    EXPECT_EQ(stream->WriteByte(13, 0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(stream->ReadByte(3600000, &byte, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(stream->Close(), S_OK);
    long count = 1;
    EXPECT_EQ(stream->SendBreak(1), E_FAIL);
    EXPECT_EQ(stream->ClearReadBuffer(), E_FAIL);
    EXPECT_EQ(stream->get_BytesInReadBuffer(&count), E_FAIL);
    EXPECT_EQ(publishedError(), L"The port is not open");
}

TEST_F(StreamTest, WhatAVanishedPeerSaidCanStillBeRead) {
    arrive("last");
    peer.vanish();
    while (isOpen())
        stream->Sleep(1);
    long count = 0;
    EXPECT_EQ(stream->get_BytesInReadBuffer(&count), S_OK);
    EXPECT_EQ(count, 4);
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

TEST_F(LinkTest, ASerialPortThatIsMissing) {
    const auto serial = create<ISerialStream>(link::kSerialStreamClass);
    VARIANT_BOOL result = VARIANT_TRUE;
    for (const wchar_t* name : {L"COM77", L"COM77:", L"", L"C:\\windows\\win.ini"}) {
        EXPECT_EQ(serial->OpenPort(Bstr(std::wstring_view(name)).get(), 9600, &result), S_OK);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
        EXPECT_EQ(result, VARIANT_FALSE);
        EXPECT_EQ(serial->PortExists(Bstr(std::wstring_view(name)).get(), &result), S_OK);
        EXPECT_EQ(result, VARIANT_FALSE);
    }
    EXPECT_EQ(serial->SetLineSettings(Bstr(L"EVEN").get(), 7, 2, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(serial->put_BaudRate(4800), E_FAIL);
    EXPECT_EQ(serial->put_BaudRate(0), E_INVALIDARG);
    EXPECT_EQ(serial->Sleep(1), S_OK) << "needs no port";
}

TEST_F(LinkTest, NullPointersAreRefused) {
    kel::test::expectNullPointersRefused(create<INetworkStream>(link::kNetworkStreamClass).Get());
    kel::test::expectNullPointersRefused(create<ISerialStream>(link::kSerialStreamClass).Get());
    kel::test::expectNullPointersRefused(create<ICollection>(link::kCollectionClass).Get());
    const auto communicator = create<IKelCommunicator>(kCommunicatorClass);
    kel::test::expectNullPointersRefused(communicator.Get());
    ComPtr<IBinaryCommunicator> binary;
    ASSERT_EQ(communicator.As(&binary), S_OK);
    kel::test::expectNullPointersRefused(binary.Get());
    ComPtr<IBinaryPacket> packet;
    EXPECT_EQ(binary->CreatePacket(&packet), E_NOTIMPL);
}

TEST_F(StreamTest, NegativeNumbersAndEmptyTextsAreRefused) {
    Bstr some;
    VARIANT_BOOL result;
    VARIANT data;
    unsigned char byte;
    const HRESULT arguments[] = {
        stream->ReadByte(-1, &byte, &result),
        stream->ReadBuffer(-1, 0, &data, &result),
        stream->WaitForString(nullptr, 0, nullptr, some.put(), &result),
        stream->Sleep(-1),
        stream->SendBreak(-1),
        stream->put_BaudRate(-1),
    };
    for (const HRESULT code : arguments)
        EXPECT_EQ(code, E_INVALIDARG) << &code - arguments;
}

TEST_F(StreamTest, LateBoundCallsFillAnyVariant) {
    arrive("answer\r\n>");
    ComPtr<IDispatch> object;
    ASSERT_EQ(stream.As(&object), S_OK);
    wchar_t name[] = L"waitforstring";
    LPOLESTR names = name;
    DISPID member = 0;
    ASSERT_EQ(object->GetIDsOfNames(IID_NULL, &names, 1, 0, &member), S_OK);

    com::Variant response, result;
    com::Variant stop(L""), timeout(0L), wanted(L">");
    VARIANT arguments[4] = {{}, stop.get(), timeout.get(), wanted.get()};
    arguments[0].vt = VT_BYREF | VT_VARIANT;
    arguments[0].pvarVal = response.put();
    DISPPARAMS parameters{arguments, nullptr, 4, 0};
    ASSERT_EQ(object->Invoke(member, IID_NULL, 0, DISPATCH_METHOD, &parameters, result.put(),
                             nullptr, nullptr),
              S_OK);
    EXPECT_EQ(response.toText(), "answer\r\n>");
    EXPECT_EQ(result.get().boolVal, VARIANT_TRUE);
}

TEST_F(LinkTest, TheCollectionKeepsOrderAndEnumerates) {
    const auto collection = create<ICollection>(link::kCollectionClass);
    for (const long number : {10L, 20L, 30L})
        collection->Add(com::Variant(number).get());
    EXPECT_EQ(collection->Remove(com::Variant(L"1").get()), S_OK);
    com::Variant item;
    EXPECT_EQ(collection->get_Item(com::Variant(2L).get(), item.put()), DISP_E_BADINDEX);
    EXPECT_EQ(collection->get_Item(com::Variant(-1L).get(), item.put()), DISP_E_BADINDEX);

    ComPtr<IUnknown> unknown;
    ASSERT_EQ(collection->get__NewEnum(&unknown), S_OK);
    ComPtr<IEnumVARIANT> enumerator;
    ASSERT_EQ(unknown.As(&enumerator), S_OK);
    std::string all;
    while (enumerator->Next(1, item.put(), nullptr) == S_OK)
        all += item.toText() + " ";
    EXPECT_EQ(all, "10 30 ");
}

}  // namespace
}  // namespace kel::bench::test
