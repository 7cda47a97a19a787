#include "tests/wine/trace/host.h"

namespace kel::trace::test {
namespace {

constexpr HRESULT kFailure = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr char kScript[] = "start\n#WAIT_OK 1\n#SENDBREAK\n#SETBAUDRATE 9600\n@n=SERIALNUMBER()\n";

class FailureTest : public TraceTest {
protected:
    FailureTest() {
        fake.reply = L"Serial Number: D123.\r\n>";
        session = fake.session();
    }

    HRESULT run(IKelCommunicator* link) {
        const auto preprocessor =
            kel::test::kelUtils().create<IPreprocessorControl>(__uuidof(Preprocessor));
        preprocessor->put_Communicator(link);
        VARIANT_BOOL result = VARIANT_FALSE;
        return preprocessor->PreprocessAndRun(Bstr(std::string_view(kScript)).get(), &result);
    }

    // A double of the link, which this session wraps.
    kel::test::FakeLink fake;
};

TEST_F(FailureTest, OneMethodFailsAndTheLinkDoesNotSeeIt) {
    for (const wchar_t* method : {L"put_BaudRate", L"IKelStream.put_BaudRate"}) {
        fake.baudRate = 300;
        fake.failMethod(method, kFailure);
        EXPECT_EQ(run(fake.communicator()), kFailure);
        EXPECT_EQ(fake.calls.back(), "BaudRate = 9600");
        EXPECT_EQ(fake.baudRate, 300);
    }
    fake.failMethod(L"IKelStream.SendBreak", kFailure);
    EXPECT_EQ(run(fake.communicator()), S_OK);
    EXPECT_EQ(fake.baudRate, 9600);
    EXPECT_EQ(session->ClearFailure(), S_OK);
}

TEST_F(FailureTest, CallsOfAWatcherCountAfterTheOneThatItIsTold) {
    long rate = 0;
    fake.onCall = [&](const std::string&) {
        fake.onCall = nullptr;
        fake.port()->get_BaudRate(&rate);
    };
    fake.failCall(1, kFailure);
    EXPECT_EQ(fake.port()->Sleep(1), kFailure);
    EXPECT_EQ(kel::test::takeError()->description, L"Call 1 fails on demand: serial1.Sleep(1)");
    EXPECT_EQ(rate, 9600);
    EXPECT_EQ(fake.callCount(), 2);
}

// The replay fails in the same way.
TEST_F(FailureTest, WhatAWatcherRefusesIsReplayed) {
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
    expectFailure(run(fake.communicator()));
    endSession();

    startReplay();
    ComPtr<IKelCommunicator> link;
    ASSERT_EQ(session->Attach(nullptr, &link), S_OK);
    expectFailure(run(link.Get()));
    EXPECT_EQ(callsLeft(), 0);
}

}  // namespace
}  // namespace kel::trace::test
