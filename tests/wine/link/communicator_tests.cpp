#include "com/object.h"
#include "tests/wine/link/connected_stream.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::bench::test {
namespace {

class PreprocessorDouble final : public com::Object<PreprocessorDouble, com::Dual<IPreprocessor>> {
public:
    static constexpr com::ClassDescription kClass{};

    int runs = 0;
    HRESULT code = S_OK;

    STDMETHODIMP PreprocessAndRun(BSTR, VARIANT_BOOL* result) override {
        *result = VARIANT_FALSE;
        return ++runs, code;
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

TEST(CommandFile, FailsWithTheReason) {
    const auto communicator = create<IKelCommunicator>(kCommunicatorClass);
    const kel::test::TemporaryFolder folder;
    const auto preprocessor = com::makeObject<PreprocessorDouble>();
    preprocessor->code = DISP_E_OVERFLOW;
    ASSERT_EQ(communicator->put_Preprocessor(preprocessor.Get()), S_OK);
    VARIANT_BOOL result = VARIANT_FALSE;
    for (const std::wstring& bad :
         {folder.path(), folder.path() + L"\\missing.kel", folder.path() + L"\\no\\such.kel"}) {
        EXPECT_HRESULT_FAILED(communicator->RunCommandFile(Bstr(bad).get(), &result));
        EXPECT_NE(kel::test::takeError().value().description.find(bad), std::wstring::npos);
        EXPECT_EQ(result, VARIANT_FALSE);
    }
    EXPECT_EQ(preprocessor->runs, 0);
    const Bstr good(folder.file(L"good.kel", "x"));
    EXPECT_EQ(communicator->RunCommandFile(good.get(), &result), DISP_E_OVERFLOW);
    EXPECT_EQ(preprocessor->runs, 1);
}

}  // namespace
}  // namespace kel::bench::test
