#include "tests/wine/link/access_test.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/refusals.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::bench::test {
namespace {

constexpr char kHexFile[] =
    ":020000021200EA\r\n:010004006A91\r\n:02000600"
    "4B6548\r\n:00000001FF\r\n";

class FirmwareTest : public AccessTest {
protected:
    void attach() {
        uploader = create<IFirmwareUploader2>(link::kFirmwareUploaderClass);
        ASSERT_EQ(uploader->Attach(link.Get()), S_OK);
        owner = com::createObject<kel::test::EventSink>(nullptr, &sink);
        DWORD cookie = 0;
        ASSERT_EQ(kel::test::eventsOf(uploader.Get(), DIID__IFirmwareUploaderEvents)
                      ->Advise(owner.Get(), &cookie),
                  S_OK);
    }
    void TearDown() override {
        uploader.Reset();
        owner.Reset();
        AccessTest::TearDown();
    }

    bool upload(const std::wstring& file, bool hexadecimal, long code = 0) {
        VARIANT_BOOL result = VARIANT_FALSE;
        sink->events.clear();
        EXPECT_EQ(
            uploader->Upload(Bstr(file).get(), com::variantBool(hexadecimal), 57600, code, &result),
            S_OK);
        return result == VARIANT_TRUE;
    }

    bool verify(const std::wstring& file, bool hexadecimal) {
        VARIANT_BOOL result = VARIANT_FALSE;
        sink->events.clear();
        EXPECT_EQ(uploader->Verify(Bstr(file).get(), com::variantBool(hexadecimal), &result), S_OK);
        return result == VARIANT_TRUE;
    }

    // What the instrument has at some addresses, as it answers.
    std::string memory(const std::string& where) {
        Bstr answer;
        VARIANT_BOOL done = VARIANT_FALSE;
        stream->WriteString(Bstr("firmware read " + where).get(), VARIANT_TRUE, 0, &done);
        stream->WaitForString(Bstr(L"DATA ").get(), 30000, nullptr, answer.put(), &done);
        stream->WaitForString(Bstr(L"\r\n>").get(), 30000, nullptr, answer.put(), &done);
        const std::string shown = text(answer);
        return shown.substr(shown.find("\r\n") + 2, shown.rfind("\r\n") - shown.find("\r\n") - 2);
    }

    std::string lastEvent() const {
        const std::size_t end = sink->events.rfind('\n', sink->events.size() - 2);
        return sink->events.substr(end == std::string::npos ? 0 : end + 1);
    }

    kel::test::TemporaryFolder folder;
    ComPtr<IFirmwareUploader2> uploader;
    ComPtr<IUnknown> owner;
    kel::test::EventSink* sink = nullptr;
};

TEST_F(FirmwareTest, AllKindsOfFilesAreLoadedAndCompared) {
    InstrumentOptions options;
    options.accessCode = -12;
    connect(options);
    attach();
    std::string binary;
    for (int i = 0; i < 3000; ++i)
        binary += static_cast<char>(i * i >> 3);
    const std::wstring binaryFile = folder.file(L"plain.bin", binary);
    EXPECT_TRUE(upload(binaryFile, false, -12));
    EXPECT_TRUE(sink->events.starts_with(
        "1 Loading the firmware...\n2 0 3000\n2 64 3000\n2 128 3000\n2 192 3000\n"));
    EXPECT_TRUE(sink->events.ends_with("2 3000 3000\n1 The firmware is loaded\n"));
    EXPECT_EQ(memory("main 0 3000"), binary);
    EXPECT_TRUE(verify(binaryFile, false));
    EXPECT_EQ(sink->events,
              "1 Comparing the firmware...\n2 0 3000\n2 1024 3000\n2 2048 3000\n"
              "2 3000 3000\n1 The firmware is as in the file\n");
    EXPECT_EQ(echoWindow(), window.number());

    // A companion goes into a bank of its own.
    const std::wstring hexFile = folder.file(L"image.hex", kHexFile);
    uploader->put_CompanionFile(Bstr(binaryFile).get());
    EXPECT_TRUE(upload(hexFile, true, -12));
    EXPECT_NE(sink->events.find("\n2 3 3003\n"), std::string::npos);
    EXPECT_EQ(memory("main 12004 4"), "j\xFFKe");
    EXPECT_EQ(memory("main 0 4"), "\xFF\xFF\xFF\xFF") << "erased";
    EXPECT_EQ(memory("companion 0 3000"), binary);
    EXPECT_TRUE(verify(hexFile, true));
    EXPECT_FALSE(verify(folder.file(L"other.hex", ":010000004BB4\n:00000001FF\n"), true));
    EXPECT_EQ(lastEvent(), "1 The firmware differs from the file at address 00000000\n");

    uploader->put_PackageFile(VARIANT_TRUE);
    uploader->put_CompanionFile(nullptr);
    const std::wstring package =
        folder.file(L"image.kfh", std::string("KELFWPK1\1\x80\0\0\2\0\0\0\xE6\x11\x8C\x6FKe", 22));
    long rates[2];
    sink->onEvent = [&](DISPID) {
        rates[0] = rates[1];
        return stream->get_BaudRate(&rates[1]);
    };
    EXPECT_TRUE(upload(package, true, -12));
    EXPECT_EQ(rates[0], 57600) << "while bytes are loaded";
    EXPECT_EQ(rates[1], 115200) << "and put back";
    link->put_RadioConnection(VARIANT_TRUE);
    EXPECT_TRUE(upload(package, true, -12));
    EXPECT_EQ(rates[0], 115200) << "a radio's stays";
    EXPECT_EQ(memory("main 8000 4"), "\xFFKe\xFF");
    EXPECT_TRUE(verify(package, false));
}

TEST_F(FirmwareTest, BrokenFilesAreRefusedBeforeAnythingIsSent) {
    connect();
    attach();
    const std::wstring good = folder.file(L"good.hex", kHexFile);
    const std::wstring bad = folder.file(L"bad.hex", ":020000004B654F\n:00000001FF\n");
    EXPECT_FALSE(upload(bad, true));
    EXPECT_EQ(sink->events, "1 The firmware file '" + com::narrow(bad) +
                                "' is broken: line 1: a wrong checksum\n");
    EXPECT_FALSE(verify(bad, true));
    EXPECT_FALSE(upload(folder.path() + L"\\none.hex", true));
    EXPECT_TRUE(sink->events.ends_with("none.hex' cannot be read: there is none\n"));
    uploader->put_CompanionFile(Bstr(bad).get());
    EXPECT_FALSE(upload(good, true));
    uploader->put_CompanionFile(nullptr);
    uploader->put_PackageFile(VARIANT_TRUE);
    EXPECT_FALSE(upload(good, true));
    EXPECT_TRUE(sink->events.ends_with("is broken: no package\n"));
    uploader->put_PackageFile(VARIANT_FALSE);
    EXPECT_FALSE(upload(good, true, 1));
    EXPECT_EQ(lastEvent(), "1 The instrument refuses the firmware: ERROR: wrong access code\n");
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(uploader->Upload(Bstr(good).get(), VARIANT_TRUE, 0, 0, &result), E_INVALIDARG);
    kel::test::expectNullPointersRefused(uploader.Get());
}

TEST_F(FirmwareTest, FaultsAreFound) {
    const std::wstring file = folder.file(L"image.hex", kHexFile);
    InstrumentOptions options;
    options.badCell = 0x12007;
    connect(options);
    attach();
    EXPECT_TRUE(upload(file, true));
    EXPECT_FALSE(verify(file, true));
    EXPECT_EQ(lastEvent(), "1 The firmware differs from the file at address 00012007\n");

    options.badCell.reset();
    options.silent = true;
    connect(options, 1, L"1000");
    attach();
    EXPECT_FALSE(upload(file, true));
    EXPECT_EQ(lastEvent(), "1 The instrument does not answer\n");
}

TEST_F(FirmwareTest, AHandlerMayLetItGoButNotBeginAnother) {
    connect();
    attach();
    const std::wstring file = folder.file(L"image.hex", kHexFile);
    HRESULT code = S_OK;
    sink->onEvent = [&](DISPID) {
        VARIANT_BOOL result = VARIANT_FALSE;
        if (uploader) code = uploader->Verify(Bstr(file).get(), VARIANT_TRUE, &result);
        uploader.Reset();
        return S_OK;
    };
    VARIANT_BOOL result = VARIANT_FALSE;
    IFirmwareUploader2* const called = uploader.Get();
    EXPECT_EQ(called->Upload(Bstr(file).get(), VARIANT_TRUE, 9600, 0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
    EXPECT_EQ(code, HRESULT_FROM_WIN32(ERROR_BUSY));
}

}  // namespace
}  // namespace kel::bench::test
