#include "com/object.h"
#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {
namespace {

// Keeps the script that it is given.
class PreprocessorDouble final : public com::Object<PreprocessorDouble, com::Dual<IPreprocessor>> {
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
};

TEST_F(ConnectedStreamTest, TheEndOfTheConnectionIsNoErrorOfACommand) {
    const auto communicator = create<IKelCommunicator>(kCommunicatorClass);
    ASSERT_EQ(communicator->put_Port(stream.Get()), S_OK);
    TestWindow window;
    window.post([&] { peer.vanish(); });
    const Bstr command(L"ver");
    for (const VARIANT_BOOL waits : {VARIANT_BOOL{1}, VARIANT_FALSE}) {
        VARIANT_BOOL result = VARIANT_TRUE;
        EXPECT_EQ(communicator->SendCommand(command.get(), waits, 30000, &result), S_OK);
        EXPECT_EQ(result, VARIANT_FALSE);
    }
    VARIANT_BOOL awake = VARIANT_TRUE;
    EXPECT_EQ(communicator->WakeUpInstrument(&awake), S_OK);
    EXPECT_EQ(awake, VARIANT_FALSE);
}

class CommandFileTest : public testing::Test {
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
        communicator.Reset();
    }

    HRESULT run(const std::wstring& file) {
        return communicator->RunCommandFile(Bstr(file).get(), &result);
    }

    ComPtr<IKelCommunicator> communicator;
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
        EXPECT_NE(kel::test::takeError().value().description.find(bad), std::wstring::npos);
        EXPECT_EQ(result, VARIANT_FALSE);
    }
    EXPECT_EQ(preprocessor->script, L"");
}

}  // namespace
}  // namespace kel::bench::test
