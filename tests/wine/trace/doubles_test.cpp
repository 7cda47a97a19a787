// Doubles of the link, recorded and replayed without them.
#include <atomic>
#include <thread>

#include "com/passed.h"
#include "com/variant.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/temporary_folder.h"
#include "tests/wine/support/test_window.h"

namespace kel::trace::test {
namespace {

using com::Bstr;
using com::ComPtr;

constexpr HRESULT kFailure = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr DISPID kStatus = 1, kFinished = 3;

// On a thread of its own.
void inApartment(const std::function<void()>& work) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    work();
    CoUninitialize();
}

class DoublesTest : public testing::Test {
protected:
    ~DoublesTest() override { endSession(); }

    void record() { EXPECT_EQ(session_->Record(Bstr(file_).get()), S_OK); }
    // Gives the link.
    ComPtr<IKelCommunicator> replay() {
        endSession();
        session_ = kel::test::kelTrace().create<ITraceSession>(__uuidof(TraceSession));
        ComPtr<IKelCommunicator> link;
        EXPECT_EQ(session_->Replay(Bstr(file_).get(), 0), S_OK);
        EXPECT_EQ(session_->Attach(nullptr, &link), S_OK);
        return link;
    }
    void endSession() { EXPECT_EQ(session_->Close(), S_OK); }
    std::string difference() const {
        Bstr text;
        EXPECT_EQ(session_->get_Difference(text.put()), S_OK);
        return com::narrow(text.view());
    }
    long callsLeft() const {
        long count = -1;
        EXPECT_EQ(session_->get_CallsLeft(&count), S_OK);
        return count;
    }

    const kel::test::TemporaryFolder folder_;
    const std::wstring file_ = folder_.path() + L"\\trace";
    kel::test::FakeLink fake_;
    ComPtr<ITraceSession> session_ = fake_.session();
};

TEST_F(DoublesTest, CallsOfAWatcherCountAfterTheOneThatItIsTold) {
    long rate = 0;
    fake_.onCall = [&](const std::string&) {
        fake_.onCall = nullptr;
        fake_.port()->get_BaudRate(&rate);
    };
    fake_.failCall(1, kFailure);
    EXPECT_EQ(fake_.port()->Sleep(1), kFailure);
    EXPECT_EQ(kel::test::takeError()->description, L"Call 1 fails on demand: serial1.Sleep(1)");
    EXPECT_EQ(rate, 9600);
    EXPECT_EQ(fake_.callCount(), 2);
}

TEST_F(DoublesTest, WhatAWatcherRefusesIsReplayed) {
    fake_.onCall = [](const std::string&) { throw com::Error(kFailure, L"No cable"); };
    record();
    for (const bool isReplay : {false, true}) {
        const auto link = isReplay ? replay() : ComPtr<IKelCommunicator>(fake_.communicator());
        EXPECT_EQ(link->SendBreak(1), kFailure);
        const auto error = kel::test::takeError();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->description, L"No cable");
        EXPECT_EQ(error->interfaceId, __uuidof(IKelCommunicator));
    }
    EXPECT_EQ(callsLeft(), 0);
}

// A recorder that any thread may call, or one only.
class RecordedDoubleTest : public DoublesTest, public testing::WithParamInterface<bool> {
protected:
    RecordedDoubleTest() {
        double_->files = {{1, 5, 2000, 1, 1, 0, 0, 0, "A.DAT"},
                          {2, 6, 2000, 1, 1, 0, 0, 0, "B.DAT"}};
        fake_.access = double_->controlling();
    }
    ~RecordedDoubleTest() override { sink_->onEvent = nullptr; }

    void recordAccess() {
        sink_->isAgile = GetParam();
        record();
        ask(fake_.communicator());
        EXPECT_EQ(isHeardByAgile(), GetParam());
    }
    void replayAccess() {
        access_.Reset();
        ask(replay().Get());
    }
    void ask(IKelCommunicator* link) {
        ASSERT_EQ(link->QueryInterface(IID_PPV_ARGS(&access_)), S_OK);
        EXPECT_EQ(com::isAgile(access_.Get()), GetParam());
        DWORD cookie = 0;
        EXPECT_EQ(kel::test::eventsOf(access_.Get(), DIID__IRecorderAccessEvents)
                      ->Advise(sink_->controlling(), &cookie),
                  S_OK);
    }
    // Whether what the double tells of its events says that any thread may call it.
    bool isHeardByAgile() {
        ComPtr<IEnumConnections> connections;
        CONNECTDATA first{};
        com::check(kel::test::eventsOf(double_->controlling(), DIID__IRecorderAccessEvents)
                       ->EnumConnections(&connections));
        com::check(connections->Next(1, &first, nullptr));
        const ComPtr<IUnknown> sink = first.pUnk;
        sink->Release();
        return com::isAgile(sink.Get());
    }
    // Downloads all that is listed, on a thread that may call.
    HRESULT download(const std::function<void()>& meanwhile = {}) {
        ComPtr<ICollection> files;
        EXPECT_EQ(access_->ReadListing(&files), S_OK);
        HRESULT code = E_PENDING;
        const auto work = [&] {
            VARIANT_BOOL result = VARIANT_FALSE;
            code = access_->Download(files.Get(), Bstr(folder_.path()).get(), &result);
            if (code != S_OK) error_ = kel::test::takeError();
            result_ = com::isTrue(result);
        };
        if (!GetParam()) return work(), code;
        std::thread worker(inApartment, work);
        if (meanwhile) meanwhile();
        worker.join();
        return code;
    }

    const ComPtr<kel::test::FakeRecorder> double_ =
        com::makeObject<kel::test::FakeRecorder>(GetParam());
    ComPtr<IRecorderAccess> access_;
    const ComPtr<kel::test::EventSink> sink_ = com::makeObject<kel::test::EventSink>();
    bool result_ = false;
    std::optional<kel::test::PublishedError> error_;
};

// A replay that hears no abort waits as long as it took, and a second more.
TEST_P(RecordedDoubleTest, AnAbortIsWaitedFor) {
    std::atomic<bool> isInside = false;
    double_->operation = [&] {
        double_->fire(kStatus, {com::Variant(L"Reading")});
        while (double_->work()) {
        }
        return false;
    };
    bench::test::TestWindow window;
    const auto abort = [&] { EXPECT_EQ(access_->Abort(), S_OK) << difference(); };
    const auto run = [&] {
        isInside = false;
        // Where the download has this thread, from its message loop.
        sink_->onEvent = [&](DISPID) {
            if (!GetParam()) window.post(abort);
            isInside = true;
            return S_OK;
        };
        return download([&] {
            while (!isInside)
                Sleep(1);
            abort();
        });
    };
    recordAccess();
    EXPECT_EQ(run(), S_OK);
    for (const bool isAborted : {true, false}) {
        replayAccess();
        EXPECT_EQ(isAborted ? run() : download(), isAborted ? S_OK : KELTRACE_E_DIFFERENCE);
        sink_->onEvent = [](DISPID) { return S_OK; };
        EXPECT_FALSE(result_);
        const std::string expected = isAborted ? "" : "recorder1.Abort(), which did not come";
        EXPECT_TRUE(difference().ends_with(expected)) << difference();
        EXPECT_EQ(callsLeft() > 0, !isAborted);
    }
}

TEST_P(RecordedDoubleTest, CallsCountAndFailOnAnyThread) {
    DWORD thread = 0;
    const auto traced = fake_.around<IRecorderAccess>(double_->controlling());
    fake_.onCall = [&](const std::string&) { thread = GetCurrentThreadId(); };
    recordAccess();
    EXPECT_EQ(access_.Get(), traced.Get());
    EXPECT_EQ(download(), S_OK);
    EXPECT_EQ(thread == GetCurrentThreadId(), !GetParam());
    const std::string folder = com::narrow(folder_.path());
    EXPECT_EQ(fake_.calls, (std::vector<std::string>{"Advise", "ReadListing",
                                                     "Download [\"A.DAT\",\"B.DAT\"] " + folder}));
    const long before = fake_.callCount();
    fake_.failMethod(L"IRecorderAccess.Download");
    EXPECT_EQ(download(), E_ACCESSDENIED);
    ASSERT_TRUE(error_);
    EXPECT_EQ(error_->interfaceId, __uuidof(IRecorderAccess));
    EXPECT_EQ(fake_.callCount() - before, 2);
    for (int i = 0; i < 2; ++i) {
        replayAccess();
        EXPECT_EQ(download(), S_OK);
        EXPECT_EQ(download(), E_ACCESSDENIED);
        EXPECT_EQ(callsLeft(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RecordedDoubleTest, testing::Bool(), [](const auto& kind) {
    return std::string(kind.param ? "Agile" : "Apartment");
});

TEST_F(DoublesTest, ALinkMayBeItsRecorder) {
    kel::test::FakeRecorder* recorder = nullptr;
    fake_.access =
        com::createObject<kel::test::FakeRecorder>(fake_.innerCommunicator(), &recorder, true);
    recorder->operation = [&] {
        recorder->fire(kFinished);
        return true;
    };
    record();
    for (const bool isReplay : {false, true}) {
        const auto link = isReplay ? replay() : ComPtr<IKelCommunicator>(fake_.communicator());
        ComPtr<IRecorderAccess> access;
        ComPtr<IUnknown> identity, same;
        ComPtr<IMarshal> marshal;
        EXPECT_EQ(link.As(&marshal), E_NOINTERFACE) << "it would lead around the session";
        ASSERT_EQ(link.As(&access), S_OK);
        EXPECT_EQ(access.As(&identity), S_OK);
        EXPECT_EQ(link.As(&same), S_OK);
        EXPECT_EQ(identity.Get(), same.Get());
        EXPECT_TRUE(com::isAgile(access.Get()));
        const com::Passed<IRecorderAccess> passed(access);
        ComPtr<IKelCommunicator> back;
        EXPECT_EQ(access.As(&back), S_OK);
        EXPECT_EQ(back.Get(), link.Get());
        const auto sink = com::makeObject<kel::test::EventSink>();
        const auto events = kel::test::eventsOf(link.Get(), DIID__IRecorderAccessEvents);
        DWORD cookie = 0;
        EXPECT_EQ(events->Advise(sink->controlling(), &cookie), S_OK);
        std::thread(inApartment, [&] {
            VARIANT_BOOL result = VARIANT_FALSE;
            const auto there = passed.fetch();
            EXPECT_EQ(there.Get(), access.Get());
            EXPECT_EQ(there->Format(&result), S_OK);
            EXPECT_TRUE(com::isTrue(result));
        }).join();
        EXPECT_EQ(sink->events, "3\n");
        EXPECT_EQ(events->Unadvise(cookie), S_OK);
    }
    EXPECT_EQ(callsLeft(), 0);
}

}  // namespace
}  // namespace kel::trace::test
