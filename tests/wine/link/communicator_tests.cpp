#include "com/object.h"
#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {
namespace {

// Keeps the script that it is given.
class PreprocessorDouble final : public com::Object<PreprocessorDouble, com::Plain<IPreprocessor>> {
public:
    static constexpr com::ClassDescription kClass{};

    std::wstring script;
    HRESULT code = S_OK;

    STDMETHODIMP PreprocessAndRun(BSTR text, VARIANT_BOOL* result) override {
        script = com::view(text);
        *result = VARIANT_TRUE;
        return code;
    }
    STDMETHODIMP get_ParentWindow(long*) override { return E_NOTIMPL; }
    STDMETHODIMP put_ParentWindow(long) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return E_NOTIMPL;
    }
};

class CommunicatorTest : public LinkTest {
protected:
    void TearDown() override {
        communicator.Reset();
        LinkTest::TearDown();
    }

    void connect(const Bstr& port) {
        const auto stream = create<INetworkStream>(link::kNetworkStreamClass);
        ASSERT_TRUE(connectTo(*stream.Get(), port));
        stream->put_EchoWindow(window.number());
        communicator = create<IKelCommunicator>(kCommunicatorClass);
        ASSERT_EQ(communicator->put_Port(stream.Get()), S_OK);
    }

    bool send(const wchar_t* command, bool waitForOk = true) {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(communicator->SendCommand(Bstr(std::wstring_view(command)).get(),
                                            waitForOk ? 1 : 0, 30000, &result),
                  S_OK);
        return result == VARIANT_TRUE;
    }

    bool waitFor(const wchar_t* text, bool stopOnPrompt) {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(communicator->WaitForString(Bstr(std::wstring_view(text)).get(), 30000,
                                              stopOnPrompt ? 1 : 0, &result),
                  S_OK);
        return result == VARIANT_TRUE;
    }

    bool wakeUp() {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(communicator->WakeUpInstrument(&result), S_OK);
        return result == VARIANT_TRUE;
    }

    TestWindow window;
    ComPtr<IKelCommunicator> communicator;
};

TEST_F(CommunicatorTest, CommandsAreAnsweredOneAfterTheOther) {
    const InstrumentServer instrument({});
    connect(instrument.port());
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(send(L"set station TOKYO")) << i;
        EXPECT_FALSE(send(L"set TOKYO no such setting")) << i;
    }
    EXPECT_TRUE(send(L"sernum", false));
    EXPECT_FALSE(waitFor(L"never said", true)) << "stops at the prompt";
    EXPECT_TRUE(send(L"sernum", false));
    EXPECT_TRUE(waitFor(L"D123", true));
    EXPECT_TRUE(waitFor(L">", true));
    EXPECT_NE(window.shown().find(L"Serial Number: D123.\r\n>"), std::wstring::npos);
}

TEST_F(CommunicatorTest, WakesASleepingInstrument) {
    InstrumentOptions options;
    options.asleep = true;
    const InstrumentServer instrument(options, 4);
    const TimeScale scale(L"4");
    connect(instrument.port());
    EXPECT_TRUE(wakeUp());
    EXPECT_NE(window.shown().find(L"firmware"), std::wstring::npos);
    EXPECT_TRUE(send(L"set station 7"));
}

TEST_F(CommunicatorTest, GivesASilentInstrumentUp) {
    InstrumentOptions options;
    options.silent = true;
    const InstrumentServer instrument(options);
    const TimeScale scale(L"100");
    connect(instrument.port());
    EXPECT_FALSE(wakeUp());
    EXPECT_FALSE(send(L"set station 7"));
}

TEST_F(CommunicatorTest, TheEndOfTheConnectionIsNoError) {
    TcpPeer peer;
    connect(peer.port());
    peer.accept();
    window.post([&] { peer.vanish(); });
    EXPECT_FALSE(send(L"ver"));
    EXPECT_FALSE(send(L"ver", false));
    EXPECT_FALSE(wakeUp());
}

TEST_F(CommunicatorTest, CommandsInSdi12FormAreUpperCaseAndNothingMore) {
    TcpPeer peer;
    connect(peer.port());
    peer.accept();
    ASSERT_EQ(communicator->put_SDI12Mode(1), S_OK);
    EXPECT_TRUE(send(L"0m!", false));
    ASSERT_EQ(communicator->put_SDI12Mode(VARIANT_FALSE), S_OK);
    EXPECT_TRUE(send(L"ver", false));
    EXPECT_EQ(peer.receive(7), "0M!ver\r");
}

TEST_F(CommunicatorTest, WithoutAPortNothingIsSent) {
    communicator = create<IKelCommunicator>(kCommunicatorClass);
    ComPtr<IKelStream> port;
    EXPECT_EQ(communicator->get_Port(&port), S_OK);
    EXPECT_EQ(port, nullptr);
    EXPECT_FALSE(wakeUp());
    EXPECT_FALSE(send(L"ver", false));
    EXPECT_FALSE(waitFor(L">", true));
    EXPECT_EQ(communicator->SendBreak(300), E_FAIL);
    EXPECT_EQ(publishedError(), L"The link has no port");
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(communicator->RunCommandFile(Bstr(L"any").get(), &result), E_FAIL);
    EXPECT_EQ(publishedError(), L"The link has no preprocessor");
}

class CommandFileTest : public CommunicatorTest {
protected:
    void SetUp() override {
        communicator = create<IKelCommunicator>(kCommunicatorClass);
        owner = com::createObject<PreprocessorDouble>(nullptr, &preprocessor);
        ASSERT_EQ(communicator->put_Preprocessor(preprocessor), S_OK);
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        folder = temporary;
        wchar_t name[MAX_PATH];
        GetTempFileNameW(temporary, L"kel", 0, name);
        path = name;
    }
    void TearDown() override {
        DeleteFileW(path.c_str());
        CommunicatorTest::TearDown();
    }

    HRESULT run(const std::wstring& file) {
        return communicator->RunCommandFile(Bstr(file).get(), &result);
    }

    ComPtr<IUnknown> owner;
    PreprocessorDouble* preprocessor = nullptr;
    std::wstring folder, path;
    VARIANT_BOOL result = VARIANT_FALSE;
};

TEST_F(CommandFileTest, ReadsEveryEncodingAndLeavesLineEnds) {
    const std::string files[] = {"\xE4\r\n#\n\r", "\xEF\xBB\xBF\xC3\xA4\r\n#\n\r",
                                 std::string("\xFF\xFE\xE4\0\r\0\n\0#\0\n\0\r\0", 14),
                                 std::string("\xFE\xFF\0\xE4\0\r\0\n\0#\0\n\0\r", 14)};
    ASSERT_EQ(GetACP(), 1252u);
    for (const std::string& bytes : files) {
        FILE* file = _wfopen(path.c_str(), L"wb");
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
        result = VARIANT_FALSE;
        EXPECT_EQ(run(path), S_OK);
        EXPECT_EQ(preprocessor->script, L"\u00E4\r\n#\n\r") << bytes;
        EXPECT_EQ(result, VARIANT_TRUE);
    }
    preprocessor->code = DISP_E_OVERFLOW;
    EXPECT_EQ(run(path), DISP_E_OVERFLOW);
}

TEST_F(CommandFileTest, NamesAFileThatItCannotRead) {
    for (const std::wstring& bad : {folder, folder + L"missing.kel", folder + L"no\\such.kel"}) {
        EXPECT_HRESULT_FAILED(run(bad));
        EXPECT_NE(publishedError().find(bad), std::wstring::npos);
        EXPECT_EQ(result, VARIANT_FALSE);
    }
    EXPECT_EQ(preprocessor->script, L"");
}

}  // namespace
}  // namespace kel::bench::test
