// The access to the recorder, recorded on doubles and replayed without them.
#include <atomic>
#include <fstream>
#include <thread>

#include "com/handles.h"
#include "com/passed.h"
#include "com/variant.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/temporary_folder.h"
#include "tests/wine/trace/host.h"

namespace kel::trace::test {
namespace {

constexpr DISPID kStatus = 1, kFinished = 3, kConfirm = 4, kStarted = 5;

std::string filesIn(const kel::test::TemporaryFolder& folder) {
    std::string told;
    for (const std::wstring& name : folder.names()) {
        const std::string content = folder.content(name);
        const std::string sign = content.size() < 10 ? content : std::string(1, content.back());
        told += com::narrow(name) + "=" + sign + " " + std::to_string(content.size()) + "\n";
    }
    return told;
}

// On a thread of its own.
void inApartment(const std::function<void()>& work) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    work();
    CoUninitialize();
}

// A double, that any thread may call or one only.
class RecordedDoubleTest : public TraceTest, public testing::WithParamInterface<bool> {
protected:
    RecordedDoubleTest() {
        double_->files = {{1, 5, 2000, 1, 1, 0, 0, 0, "A.DAT"},
                          {2, 6, 2000, 1, 1, 0, 0, 0, "B.DAT"}};
        fake_.access = double_->controlling();
        session = fake_.session();
    }
    ~RecordedDoubleTest() override { sink_->onEvent = nullptr; }

    void record() {
        EXPECT_EQ(session->Record(bstr(file).get()), S_OK);
        ask(fake_.communicator());
    }
    void replay() {
        letGo();
        startReplay();
        ComPtr<IKelCommunicator> link;
        EXPECT_EQ(session->Attach(nullptr, &link), S_OK);
        ask(link.Get());
    }
    void letGo() {
        access_.Reset();
        endSession();
    }
    void ask(IKelCommunicator* link) {
        ASSERT_EQ(link->QueryInterface(IID_PPV_ARGS(&access_)), S_OK);
        EXPECT_EQ(com::isAgile(access_.Get()), GetParam());
        DWORD cookie = 0;
        EXPECT_EQ(kel::test::eventsOf(access_.Get(), DIID__IRecorderAccessEvents)
                      ->Advise(sink_->controlling(), &cookie),
                  S_OK);
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

    const kel::test::TemporaryFolder folder_;
    const ComPtr<kel::test::FakeRecorder> double_ =
        com::makeObject<kel::test::FakeRecorder>(GetParam());
    kel::test::FakeLink fake_;
    ComPtr<IRecorderAccess> access_;
    const ComPtr<kel::test::EventSink> sink_ = com::makeObject<kel::test::EventSink>();
    bool result_ = false;
    std::optional<kel::test::PublishedError> error_;
};

// What is there when the next file is begun, and in the end.
TEST_P(RecordedDoubleTest, FilesAreThereWhenTheyWere) {
    const std::string longFile(40000, 'b');
    double_->operation = [&] {
        double_->fire(kStarted, {com::Variant(L"A.DAT")});
        folder_.file(L"A.DAT", std::string_view("a\0\xFF\r\n", 5));
        double_->fire(kStarted, {com::Variant(L"B.DAT")});
        folder_.file(L"B.DAT", longFile);
        folder_.file(L"C.DAT", "not selected");
        return true;
    };
    std::string seen;
    sink_->onEvent = [&](DISPID) { return seen += filesIn(folder_) + "-\n", S_OK; };
    const auto run = [&] {
        for (const wchar_t* name : {L"A.DAT", L"C.DAT"})
            DeleteFileW((folder_.path() + L"\\" + name).c_str());
        folder_.file(L"B.DAT", "before");
        EXPECT_EQ(download(), S_OK) << com::narrow(difference());
        EXPECT_TRUE(result_);
        DeleteFileW((folder_.path() + L"\\C.DAT").c_str());
        return std::exchange(seen, {}) + filesIn(folder_);
    };
    record();
    const std::string recorded = run();
    const std::string first("A.DAT=a\0\xFF\r\n 5\n", 14);
    EXPECT_EQ(recorded,
              "B.DAT=before 6\n-\n" + first + "B.DAT=before 6\n-\n" + first + "B.DAT=b 40000\n");
    replay();
    EXPECT_EQ(run(), recorded);
    EXPECT_EQ(callsLeft(), 0);

    // A recording that somebody has changed reaches no other folder, and no device.
    letGo();
    const std::string original = recording();
    for (const std::string name : {"..\\\\B.DAT", "NUL"}) {
        std::string text = original;
        const std::string from = "\"leaves\":\"B.DAT", to = "\"leaves\":\"" + name;
        for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
            text.replace(at, from.size(), to);
        std::ofstream(com::narrow(file), std::ios::binary) << text;
        replay();
        EXPECT_EQ(download(), KELTRACE_E_DIFFERENCE) << name;
        EXPECT_NE(difference().find(L"it is no file of that folder"), std::wstring::npos)
            << com::narrow(difference());
    }
}

TEST_P(RecordedDoubleTest, WhatIsTooLargeIsADifference) {
    double_->operation = [&] {
        const com::FileHandle large(CreateFileW((folder_.path() + L"\\B.DAT").c_str(),
                                                GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0,
                                                nullptr));
        SetFilePointer(large.get(), (32 << 20) + 1, nullptr, FILE_BEGIN);
        EXPECT_TRUE(SetEndOfFile(large.get()));
        return true;
    };
    record();
    EXPECT_EQ(download(), S_OK);
    replay();
    EXPECT_EQ(download(), KELTRACE_E_DIFFERENCE);
    EXPECT_NE(difference().find(L"the recording does not hold its 33554433 bytes"),
              std::wstring::npos);
}

// A replay that hears no abort waits as long as it took, and a second more.
TEST_P(RecordedDoubleTest, AnAbortIsWaitedFor) {
    std::atomic<bool> isInside = false;
    double_->operation = [&] {
        double_->fire(kStatus, {com::Variant(L"Reading")});
        while (double_->work()) {
        }
        return false;
    };
    TestWindow window;
    const auto abort = [&] { EXPECT_EQ(access_->Abort(), S_OK) << com::narrow(difference()); };
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
    record();
    EXPECT_EQ(run(), S_OK);
    for (const bool isAborted : {true, false}) {
        replay();
        EXPECT_EQ(isAborted ? run() : download(), isAborted ? S_OK : KELTRACE_E_DIFFERENCE);
        sink_->onEvent = [](DISPID) { return S_OK; };
        EXPECT_FALSE(result_);
        const std::wstring expected = isAborted ? L"" : L"recorder1.Abort(), which did not come";
        EXPECT_TRUE(difference().ends_with(expected)) << com::narrow(difference());
        EXPECT_EQ(callsLeft() > 0, !isAborted);
    }
}

TEST_P(RecordedDoubleTest, CallsCountAndFailOnAnyThread) {
    DWORD thread = 0;
    const auto traced = fake_.around<IRecorderAccess>(double_->controlling());
    fake_.onCall = [&](const std::string&) { thread = GetCurrentThreadId(); };
    record();
    EXPECT_EQ(access_, traced);
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
        replay();
        EXPECT_EQ(download(), S_OK);
        EXPECT_EQ(download(), E_ACCESSDENIED);
        EXPECT_EQ(callsLeft(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RecordedDoubleTest, testing::Bool(), [](const auto& kind) {
    return std::string(kind.param ? "Agile" : "Apartment");
});

// A link that is itself the access to its recorder.
class CardLink final : public com::Object<CardLink> {
public:
    static constexpr com::ClassDescription kClass{};
    void finalConstruct() {
        ComPtr<IClassFactory> factory;
        com::check(kel::test::benchLink().classObject(bench::test::kCommunicatorClass,
                                                      IID_PPV_ARGS(&factory)));
        com::check(factory->CreateInstance(controlling(), IID_PPV_ARGS(&communicator_)));
        recorder_ = com::createObject<kel::test::FakeRecorder>(controlling(), &recorder, true);
    }
    kel::test::FakeRecorder* recorder = nullptr;

private:
    void* findInterface(REFIID) override { return nullptr; }
    HRESULT findElsewhere(REFIID iid, void** result) override {
        const bool isCommunicator = iid == __uuidof(IKelCommunicator) || iid == IID_IDispatch;
        return (isCommunicator ? communicator_ : recorder_)->QueryInterface(iid, result);
    }

    ComPtr<IUnknown> communicator_;
    ComPtr<IUnknown> recorder_;
};

using OwnRecorderTest = TraceTest;

TEST_F(OwnRecorderTest, ALinkMayBeItsRecorder) {
    const auto inner = com::makeObject<CardLink>();
    inner->recorder->operation = [&] {
        inner->recorder->fire(kFinished);
        return true;
    };
    const auto use = [&](const ComPtr<IKelCommunicator>& link) {
        ComPtr<IRecorderAccess> access;
        ComPtr<IUnknown> identity, same;
        ASSERT_EQ(link.As(&access), S_OK);
        EXPECT_EQ(access.As(&identity), S_OK);
        EXPECT_EQ(link.As(&same), S_OK);
        EXPECT_EQ(identity, same);
        EXPECT_TRUE(com::isAgile(access.Get()));
        const com::Passed<IRecorderAccess> passed(access);
        ComPtr<IKelCommunicator> back;
        EXPECT_EQ(access.As(&back), S_OK);
        EXPECT_EQ(back, link);
        const auto sink = com::makeObject<kel::test::EventSink>();
        const auto events = kel::test::eventsOf(link.Get(), DIID__IRecorderAccessEvents);
        DWORD cookie = 0;
        EXPECT_EQ(events->Advise(sink->controlling(), &cookie), S_OK);
        std::thread(inApartment, [&] {
            VARIANT_BOOL result = VARIANT_FALSE;
            const auto there = passed.fetch();
            EXPECT_EQ(there, access);
            EXPECT_EQ(there->Format(&result), S_OK);
            EXPECT_TRUE(com::isTrue(result));
        }).join();
        EXPECT_EQ(sink->events, "3\n");
        EXPECT_EQ(events->Unadvise(cookie), S_OK);
    };
    startRecording();
    ComPtr<IKelCommunicator> link, bare;
    ASSERT_EQ(inner->QueryInterface(IID_PPV_ARGS(&bare)), S_OK);
    ASSERT_EQ(session->Attach(bare.Get(), &link), S_OK);
    use(link);
    link.Reset();
    endSession();
    startReplay();
    ASSERT_EQ(session->Attach(nullptr, &link), S_OK);
    use(link);
    EXPECT_EQ(callsLeft(), 0);
}

}  // namespace
}  // namespace kel::trace::test
