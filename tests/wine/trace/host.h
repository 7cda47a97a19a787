#pragma once
// A host of KelUtils with a trace session, over the bench's link.

#include "tests/wine/link/connected_stream.h"

#include "hosts/trace/KelTrace.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::trace::test {

using bench::test::InstrumentServer;
using bench::test::TcpPeer;
using bench::test::TestWindow;
using com::Bstr;
using com::ComPtr;

inline Bstr bstr(std::wstring_view text) {
    return Bstr(text);
}

// Begins a recording of the bench's link, whose classes need not be registered.
void recordBench(ITraceSession& session, const std::wstring& file);

// A host that runs scripts on a link, as the command-line host does. The link and its stream are
// traced or not.
class Host {
public:
    Host(IKelCommunicator* link, IKelStream* stream);
    ~Host();

    // The result of PreprocessAndRun; `ran` tells its answer.
    HRESULT run(std::string_view script);
    bool ran = false;

    // Runs when the message loop comes to it.
    void post(std::function<void()> handler) { window_.post(std::move(handler)); }
    const std::wstring& shown() const { return window_.shown(); }

    ComPtr<IPreprocessorControl> preprocessor;
    ComPtr<IKelCommunicator> link;
    ComPtr<IKelStream> stream;

private:
    TestWindow window_;
};

class TraceTest : public testing::Test {
protected:
    TraceTest();
    ~TraceTest() override;

    static ComPtr<ITraceSession> newSession();

    // Opens a session: to record into `file`, to replay it, or to count and fail only. The bench's
    // link is found by its class identifiers when a session that is no replay begins; something
    // else in the place of one of its classes.
    void startRecording(std::pair<CLSID, IUnknown*> other = {});
    void startReplay(double speed = 0);
    void startCounting();
    // Also lets go the host.
    void endSession();

    // The traced communicator, around a new one of the bench outside a replay.
    ComPtr<IKelCommunicator> attach();
    // A stream as KelUtils creates it.
    template <class Stream>
    ComPtr<Stream> createStream(REFCLSID identifier) {
        ComPtr<Stream> stream;
        EXPECT_EQ(
            CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&stream)),
            S_OK);
        return stream;
    }
    // A host on a traced link that is connected to a network port.
    void connectHost(const Bstr& port);

    std::string recording() const;
    std::wstring difference() const;
    long callsLeft() const;

    // Not so fast that a busy machine makes the link ask twice.
    bench::test::TimeScale timeScale{L"20"};
    ComPtr<ITraceSession> session;
    std::unique_ptr<Host> host;
    std::wstring file;
};

}  // namespace kel::trace::test
