#include "com/variant.h"
#include "tests/wine/service/fake_uploader.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/trace/host.h"

namespace kel::trace::test {
namespace {

using TransparencyTest = TraceTest;

template <class Interface>
HRESULT asks(IUnknown* object) {
    ComPtr<Interface> found;
    return object->QueryInterface(IID_PPV_ARGS(&found));
}

TEST_F(TransparencyTest, ObjectsCreatedByIdentifierAreWrapped) {
    startCounting();
    long count = -1;
    const auto serial = createStream<ISerialStream>(link::kSerialStreamClass);
    const auto network = createStream<IKelStream>(link::kNetworkStreamClass);
    const auto collection = createStream<ICollection>(link::kCollectionClass);
    EXPECT_EQ(collection->Add(com::Variant(serial.Get()).get()), S_OK);
    EXPECT_EQ(collection->get_Count(&count), S_OK);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(session->get_CallCount(&count), S_OK);
    EXPECT_EQ(count, 5) << "creations count";
    EXPECT_EQ(asks<INetworkStream>(serial.Get()), E_NOINTERFACE);
    EXPECT_EQ(asks<ISerialStream>(network.Get()), E_NOINTERFACE);
    EXPECT_EQ(asks<IKelStream>(serial.Get()), S_OK);
    collection->Remove(com::Variant(0L).get());
}

// A host asks for what was added to an interface, and must not get past the session with it.
TEST_F(TransparencyTest, AdditionsAreTracedWhereTheLinkHasThem) {
    kel::test::FakeLink fake;
    session = fake.session();
    const auto uploader = com::makeObject<kel::test::FakeUploader>();
    for (const bool isPlain : {false, true}) {
        uploader->isPlain = isPlain;
        const auto traced = fake.around<IUnknown>(uploader->controlling());
        ComPtr<IFirmwareUploader2> added;
        EXPECT_EQ(traced.As(&added), isPlain ? E_NOINTERFACE : S_OK);
        EXPECT_EQ(asks<IFirmwareUploader>(traced.Get()), S_OK);
        if (isPlain) continue;
        EXPECT_EQ(added->put_CompanionFile(bstr(L"a.kfc").get()), S_OK);
        EXPECT_EQ(fake.takeWork(), "CompanionFile = \"a.kfc\"\n");
    }
}

// An upload that three sinks hear: the first one makes a call, calls the last one in, and leaves at
// its second event; the second one fails. What they and the host see.
std::string heardUpload(const ComPtr<IFirmwareUploader>& uploader, bool answer = true) {
    const auto point = kel::test::eventsOf(uploader.Get(), DIID__IFirmwareUploaderEvents);
    ComPtr<kel::test::EventSink> sinks[3];
    DWORD cookies[3]{};
    std::string log;
    const auto tell = [&](const char* what, long result) {
        log += what + (" " + std::to_string(result)) + "\n";
    };
    const auto advise = [&](std::size_t i) {
        tell("Advise", point->Advise(sinks[i]->controlling(), &cookies[i]));
    };
    for (std::size_t i = 0; i < 3; ++i) {
        sinks[i] = com::makeObject<kel::test::EventSink>();
        sinks[i]->answer = answer;
        sinks[i]->onEvent = [&, i, events = 0](DISPID) mutable {
            log += std::to_string(i) + ": " + std::exchange(sinks[i]->events, {});
            if (i == 0) tell("PackageFile", uploader->put_PackageFile(VARIANT_TRUE));
            if (i == 0 && events == 0) advise(2);
            if (i == 0 && events == 1) tell("Unadvise", point->Unadvise(cookies[0]));
            ++events;
            return i == 1 ? E_FAIL : S_OK;
        };
    }
    advise(0);
    advise(1);
    for (IUnknown* const refused :
         {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(point.Get())}) {
        DWORD cookie = 7;
        tell("Advise", point->Advise(refused, &cookie));
        tell("cookie", static_cast<long>(cookie));
    }
    VARIANT_BOOL result = 7;
    tell("Upload", uploader->Upload(bstr(L"a.hex").get(), VARIANT_TRUE, 9600, 7, &result));
    tell("result", result);
    ComPtr<IEnumConnections> connections;
    tell("EnumConnections", point->EnumConnections(&connections));
    CONNECTDATA each{};
    while (connections->Next(1, &each, nullptr) == S_OK) {
        for (long i = 0; i < 3; ++i)
            if (each.pUnk == static_cast<IDispatch*>(sinks[i].Get())) tell("heard by", i);
        each.pUnk->Release();
    }
    ComPtr<IConnectionPointContainer> container;
    tell("Container", point->GetConnectionPointContainer(&container));
    ComPtr<IFirmwareUploader> same;
    tell("same", container.As(&same) == S_OK && same == uploader);
    for (const DWORD cookie : cookies)
        tell("Unadvise", point->Unadvise(cookie));
    return log;
}

// Bare, recorded and replayed.
TEST_F(TransparencyTest, EventsComeAsTheyWould) {
    const auto inner = com::makeObject<kel::test::FakeUploader>();
    std::string answers;
    inner->onUpload = [&] {
        inner->say(L"\x20AC");
        inner->progress(1, 70000);
        for (const com::Variant& answer : inner->askFormerSinks(4, L"b"))
            answers += answer.toText() + " ";
        inner->say(L"");
    };
    const auto upload = [&](bool answer = true) {
        return heardUpload(createStream<IFirmwareUploader>(link::kFirmwareUploaderClass), answer);
    };
    const std::string bare = heardUpload(inner);
    const std::string bareAnswers = std::exchange(answers, {});
    EXPECT_EQ(bare,
              "Advise 0\nAdvise 0\nAdvise -2147467261\ncookie 0\nAdvise -2147220990\ncookie 0\n"
              "0: 1 \x80\nPackageFile 0\nAdvise 0\n1: 1 \x80\n"
              "0: 2 1 70000\nPackageFile 0\nUnadvise 0\n1: 2 1 70000\n2: 2 1 70000\n"
              "0: 4 b\nPackageFile 0\n1: 4 b\n1: 1 \n2: 1 \nUpload 0\nresult 1\n"
              "EnumConnections 0\nheard by 1\nheard by 2\nContainer 0\nsame 1\n"
              "Unadvise -2147220992\nUnadvise 0\nUnadvise 0\n");
    EXPECT_EQ(bareAnswers, "True True ");

    startRecording({link::kFirmwareUploaderClass, inner->controlling()});
    EXPECT_EQ(upload(), bare);
    EXPECT_EQ(std::exchange(answers, {}), bareAnswers);
    endSession();
    startReplay();
    EXPECT_EQ(upload(), bare) << com::narrow(difference());
    EXPECT_EQ(callsLeft(), 0);
    EXPECT_EQ(answers, "");
    endSession();
    startReplay();
    EXPECT_NE(upload(false), bare);
    EXPECT_NE(difference().find(L"event 4"), std::wstring::npos) << com::narrow(difference());
}

TEST_F(TransparencyTest, IdentitiesAreKept) {
    startCounting();
    const auto inner = bench::test::create<IKelCommunicator>(bench::test::kCommunicatorClass);
    ComPtr<IKelCommunicator> link, again;
    EXPECT_EQ(session->Attach(inner.Get(), &link), S_OK);
    EXPECT_EQ(session->Attach(inner.Get(), &again), S_OK);
    EXPECT_EQ(link, again);
    EXPECT_EQ(asks<IBinaryCommunicator>(link.Get()), S_OK) << "passed on";
    EXPECT_EQ(asks<IRecorderAccess>(link.Get()), S_OK);
    EXPECT_EQ(asks<IKelStream>(link.Get()), E_NOINTERFACE);

    ComPtr<IKelStream> port, innerPort;
    auto stream = createStream<IKelStream>(link::kSerialStreamClass);
    EXPECT_EQ(link->put_Port(stream.Get()), S_OK);
    IKelStream* const known = stream.Get();
    stream.Reset();
    EXPECT_EQ(link->get_Port(&port), S_OK);
    EXPECT_EQ(port.Get(), known);
    EXPECT_EQ(inner->get_Port(&innerPort), S_OK);
    EXPECT_NE(innerPort.Get(), known) << "the link has its own stream";
    EXPECT_EQ(link->put_Port(nullptr), S_OK);
    EXPECT_EQ(link->get_Port(&port), S_OK);
    EXPECT_FALSE(port);

    const auto preprocessor = kel::test::kelUtils().create<IPreprocessor>(__uuidof(Preprocessor));
    ComPtr<IPreprocessor> given;
    EXPECT_EQ(link->put_Preprocessor(preprocessor.Get()), S_OK);
    EXPECT_EQ(link->get_Preprocessor(&given), S_OK);
    EXPECT_EQ(given, preprocessor);
    EXPECT_EQ(link->put_Preprocessor(nullptr), S_OK);
}

TEST_F(TransparencyTest, ErrorsKeepTheirOrigin) {
    const auto fail = [this] {
        const auto serial = createStream<ISerialStream>(link::kSerialStreamClass);
        VARIANT_BOOL open = VARIANT_TRUE;
        EXPECT_EQ(serial->OpenPort(bstr(L"COM47").get(), -1, &open), E_INVALIDARG);
        const auto error = kel::test::takeError();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->source, L"BenchLink.SerialStream.1");
        EXPECT_EQ(error->interfaceId, __uuidof(ISerialStream));
        EXPECT_EQ(serial->OpenPort(bstr(L"COM47").get(), 9600, nullptr), E_POINTER);
    };
    startRecording();
    fail();
    endSession();
    startReplay();
    fail();
    EXPECT_EQ(difference(), L"");
}

TEST_F(TransparencyTest, ValuesComeBack) {
    TcpPeer peer;
    const std::string sent("\x00\xFF\r\n\"\\\x81", 7);
    const auto talk = [&](bool isReplay) {
        const auto stream = createStream<INetworkStream>(link::kNetworkStreamClass);
        ASSERT_TRUE(bench::test::connectTo(*stream.Get(), peer.port()));
        if (!isReplay) peer.accept();
        if (!isReplay) peer.send("Z" + sent + "line\r");
        unsigned char byte = 0;
        VARIANT_BOOL result = VARIANT_FALSE;
        com::Variant data;
        Bstr line;
        EXPECT_EQ(stream->ReadByte(100000, &byte, &result), S_OK);
        EXPECT_EQ(byte, 'Z');
        EXPECT_EQ(stream->ReadBuffer(7, 100000, data.put(), &result), S_OK);
        EXPECT_EQ(result, VARIANT_TRUE);
        ASSERT_EQ(data.type(), VT_ARRAY | VT_UI1);
        void* bytes = nullptr;
        SafeArrayAccessData(data.get().parray, &bytes);
        EXPECT_EQ(std::string(static_cast<char*>(bytes), 7), sent);
        SafeArrayUnaccessData(data.get().parray);
        EXPECT_EQ(stream->WriteBuffer(data.get(), 0, &result), S_OK);
        EXPECT_EQ(stream->ReadString(100000, line.put(), &result), S_OK);
        EXPECT_EQ(line.view(), L"line");

        ComPtr<INetworkStream2> gateway;
        ASSERT_EQ(stream.As(&gateway), S_OK);
        EXPECT_EQ(gateway->put_Password(bstr(L"sea").get()), S_OK);
        EXPECT_EQ(gateway->get_PasswordRequired(&result), S_OK);
        EXPECT_EQ(result, VARIANT_FALSE);

        // The same late-bound.
        DISPID member = 0;
        wchar_t name[] = L"IsOpen";
        LPOLESTR names = name;
        EXPECT_EQ(stream->GetIDsOfNames(IID_NULL, &names, 1, 0, &member), S_OK);
        com::Variant open;
        DISPPARAMS none{};
        EXPECT_EQ(stream->Invoke(member, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, open.put(),
                                 nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(open.get().boolVal, VARIANT_TRUE);
    };
    startRecording();
    talk(false);
    endSession();
    EXPECT_NE(recording().find("\"put_Password\",\"in\":[\"***\"]"), std::string::npos);
    peer.vanish();
    startReplay();
    talk(true);
    EXPECT_EQ(difference(), L"");
}

TEST_F(TransparencyTest, TheEchoReachesTheHostsWindow) {
    startRecording();
    TestWindow first, second;
    const auto inner = bench::test::create<IKelCommunicator>(bench::test::kCommunicatorClass);
    ComPtr<IKelStream> innerPort;
    {
        ComPtr<IKelCommunicator> link;
        EXPECT_EQ(session->Attach(inner.Get(), &link), S_OK);
        const auto stream = createStream<IKelStream>(link::kNetworkStreamClass);
        EXPECT_EQ(link->put_Port(stream.Get()), S_OK);
        long window = -1;
        EXPECT_EQ(stream->get_EchoWindow(&window), S_OK);
        EXPECT_EQ(window, 0);
        for (const TestWindow* each : {&first, &second}) {
            EXPECT_EQ(stream->put_EchoWindow(each->number()), S_OK);
            EXPECT_EQ(stream->get_EchoWindow(&window), S_OK);
            EXPECT_EQ(window, each->number());
            EXPECT_EQ(stream->Echo(bstr(L"a\x20AC\n").get()), S_OK);
        }
        EXPECT_EQ(inner->get_Port(&innerPort), S_OK);
        EXPECT_EQ(innerPort->get_EchoWindow(&window), S_OK);
        EXPECT_NE(window, second.number()) << "the link shows its texts in a window between";
        // The number of no window, not even of another program's.
        constexpr long kNoWindow = 0xFFFF;
        EXPECT_EQ(stream->put_EchoWindow(kNoWindow), S_OK);
        EXPECT_EQ(innerPort->get_EchoWindow(&window), S_OK);
        EXPECT_EQ(window, kNoWindow) << "what is no window is the link's to judge";
        EXPECT_EQ(stream->put_EchoWindow(second.number()), S_OK);
    }
    EXPECT_EQ(innerPort->Echo(bstr(L"b").get()), S_OK);
    EXPECT_EQ(first.shown(), L"a\x20AC\n");
    EXPECT_EQ(second.shown(), L"a\x20AC\nb") << "also when the wrapper has gone";
    EXPECT_NE(recording().find("\"echoed\":\"a\xE2\x82\xAC\\n\""), std::string::npos);
}

TEST_F(TransparencyTest, TheLastReferenceMayGoInsideACall) {
    startRecording();
    TestWindow window;
    auto stream = createStream<IKelStream>(link::kNetworkStreamClass);
    IKelStream* const called = stream.Get();
    window.post([&] { stream.Reset(); });
    EXPECT_EQ(called->Sleep(100), S_OK);
    EXPECT_FALSE(stream);
}

}  // namespace
}  // namespace kel::trace::test
