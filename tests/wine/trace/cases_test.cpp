// Cases of the link's objects, recorded on the bench and replayed without it.
#include "tests/wine/link/link_case.h"
#include "tests/wine/trace/host.h"

namespace kel::trace::test {
namespace {

class TracedCase : public bench::test::LinkCase {
protected:
    ~TracedCase() override { endSession(); }

    // Below zero, the speed of the replay records.
    void playAt(double speed) {
        SCOPED_TRACE(speed);
        isReplay_ = speed >= 0;
        session_ = kel::test::kelTrace().create<ITraceSession>(__uuidof(TraceSession));
        com::check(isReplay_ ? session_->Replay(Bstr(file_).get(), speed) : S_OK);
        if (!isReplay_) recordBench(*session_.Get(), file_);
        playAll();
        Bstr difference;
        long left = 0;
        EXPECT_EQ(session_->get_Difference(difference.put()), S_OK);
        EXPECT_EQ(com::narrow(difference.view()), "");
        EXPECT_EQ(session_->get_CallsLeft(&left), S_OK);
        EXPECT_EQ(left, 0);
        play("release");
        server.reset();
        for (const std::wstring& name : folder_.names())
            DeleteFileW((folder_.path() + L"\\" + name).c_str());
        endSession();
    }

private:
    void endSession() {
        if (!session_) return;
        EXPECT_EQ(session_->Close(), S_OK);
        session_.Reset();
    }

    Bstr startInstrument(bench::InstrumentOptions options, double instrumentScale) override {
        if (!isReplay_) port_ = LinkCase::startInstrument(std::move(options), instrumentScale);
        return Bstr(port_.view());
    }

    ComPtr<IDispatch> newObject(REFCLSID identifier) override {
        ComPtr<IDispatch> object;
        if (identifier != bench::test::kCommunicatorClass) {
            com::check(
                CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)));
            return object;
        }
        ComPtr<IKelCommunicator> bare, traced;
        if (!isReplay_) bare = bench::test::create<IKelCommunicator>(identifier);
        com::check(session_->Attach(bare.Get(), &traced));
        com::check(traced.As(&object));
        return object;
    }

    const kel::test::TemporaryFolder recordings_;
    const std::wstring file_ = recordings_.path() + L"\\trace";
    ComPtr<ITraceSession> session_;
    bool isReplay_ = false;
    Bstr port_;
};

TEST_P(TracedCase, IsReplayedAsItWasRecorded) {
    for (const double speed : {-1, 0, 1})
        playAt(speed);
}

INSTANTIATE_TEST_SUITE_P(Trace, TracedCase,
                         testing::ValuesIn(kel::test::readCases("tests/wine/trace/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::trace::test
