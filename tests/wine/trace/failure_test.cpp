#include "tests/wine/trace/host.h"

namespace kel::trace::test {
namespace {

constexpr HRESULT kFailure = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr char kScript[] = "start\n#WAIT_OK 1\n#SENDBREAK\n#SETBAUDRATE 9600\n@n=SERIALNUMBER()\n";

class FailureTest : public TraceTest {
protected:
    // Runs the script on a double of the link, whose calls are counted too.
    HRESULT run(IKelCommunicator* link) {
        const auto preprocessor =
            kel::test::kelUtils().create<IPreprocessorControl>(__uuidof(Preprocessor));
        preprocessor->put_Communicator(link);
        VARIANT_BOOL result = VARIANT_FALSE;
        return preprocessor->PreprocessAndRun(Bstr(std::string_view(kScript)).get(), &result);
    }

    HRESULT runTraced() {
        ComPtr<IKelCommunicator> link;
        EXPECT_EQ(session->Attach(fake.communicator(), &link), S_OK);
        return run(link.Get());
    }

    kel::test::FakeLink fake;
};

TEST_F(FailureTest, EveryCallFailsOnceWithItsReason) {
    fake.reply = L"Serial Number: D123.\r\n>";
    ASSERT_EQ(run(fake.communicator()), S_OK);
    const std::vector<std::string> dialogue = std::exchange(fake.calls, {});

    ASSERT_EQ(session->ClearFailure(), S_OK);
    EXPECT_EQ(runTraced(), S_OK);
    EXPECT_EQ(std::exchange(fake.calls, {}), dialogue);
    long calls = 0;
    EXPECT_EQ(session->get_CallCount(&calls), S_OK);
    ASSERT_GT(calls, static_cast<long>(dialogue.size())) << "the port is fetched besides";

    for (long failing = 1; failing <= calls; ++failing) {
        SCOPED_TRACE(failing);
        ASSERT_EQ(session->FailCall(failing, kFailure), S_OK);
        EXPECT_EQ(runTraced(), kFailure);
        const auto error = kel::test::takeError();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->description.find(L"Call "), 0u);
        EXPECT_NE(error->description.find(L" fails on demand: "), std::wstring::npos);
        EXPECT_LT(fake.calls.size(), dialogue.size()) << "the link does not see it";
        fake.calls.clear();
    }
}

TEST_F(FailureTest, OneMethodFails) {
    for (const wchar_t* method : {L"SendBreak", L"IKelCommunicator.SendBreak"}) {
        ASSERT_EQ(session->FailMethod(bstr(method).get(), 1, kFailure), S_OK);
        EXPECT_EQ(runTraced(), kFailure);
        EXPECT_EQ(fake.calls.back(), "ClearReadBuffer") << "the call before it";
    }
    ASSERT_EQ(session->FailMethod(bstr(L"IKelStream.SendBreak").get(), 1, kFailure), S_OK);
    EXPECT_EQ(runTraced(), S_OK);
    EXPECT_EQ(session->ClearFailure(), S_OK);
}

// The link's own failure passes, with its reason, and is recorded: the replay fails in the same
// way.
TEST_F(FailureTest, FailuresOfTheLinkAreReplayed) {
    ASSERT_EQ(session->Record(bstr(file).get()), S_OK);
    fake.onCall = [](const std::string& call) {
        if (call.starts_with("Link.WaitForString")) throw com::Error(kFailure, L"No cable");
    };
    const auto expectFailure = [&](HRESULT code) {
        EXPECT_EQ(code, kFailure);
        const auto error = kel::test::takeError();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->description, L"No cable");
        EXPECT_EQ(error->interfaceId, __uuidof(IKelCommunicator));
    };
    expectFailure(runTraced());
    endSession();

    startReplay();
    ComPtr<IKelCommunicator> link;
    ASSERT_EQ(session->Attach(nullptr, &link), S_OK);
    expectFailure(run(link.Get()));
    EXPECT_EQ(callsLeft(), 0);
}

}  // namespace
}  // namespace kel::trace::test
