#include "tests/wine/trace/host.h"

#include <fstream>
#include <iterator>

#include "tests/wine/support/class_object.h"
#include "tests/wine/support/import_patch.h"

namespace kel::trace::test {
namespace {

std::pair<CLSID, ComPtr<IClassFactory>> otherClass;

// Stands for the platform, which would find the bench's classes if they were registered.
HRESULT WINAPI benchClassObject(REFCLSID identifier, DWORD, COSERVERINFO*, REFIID iid,
                                void** result) {
    if (otherClass.second && identifier == otherClass.first)
        return otherClass.second->QueryInterface(iid, result);
    return kel::test::benchLink().classObject(identifier, iid, result);
}

class BenchClasses {
    const kel::test::ImportPatch patch_{kel::test::kelTrace().module(), "CoGetClassObject",
                                        reinterpret_cast<void*>(&benchClassObject)};
};

}  // namespace

void recordBench(ITraceSession& session, const std::wstring& file) {
    const BenchClasses classes;
    ASSERT_EQ(session.Record(bstr(file).get()), S_OK);
}

Host::Host(IKelCommunicator* communicator, IKelStream* port)
    : preprocessor(kel::test::kelUtils().create<IPreprocessorControl>(__uuidof(Preprocessor))),
      link(communicator),
      stream(port) {
    EXPECT_EQ(stream->put_EchoWindow(window_.number()), S_OK);
    EXPECT_EQ(stream->put_IdleProcessing(VARIANT_TRUE), S_OK);
    EXPECT_EQ(link->put_Port(stream.Get()), S_OK);
    EXPECT_EQ(link->put_Preprocessor(preprocessor.Get()), S_OK);
    EXPECT_EQ(preprocessor->put_Communicator(link.Get()), S_OK);
}

Host::~Host() {
    link->put_Preprocessor(nullptr);
    preprocessor->put_Communicator(nullptr);
    link->put_Port(nullptr);
    stream->put_EchoWindow(0);
}

HRESULT Host::run(std::string_view script) {
    VARIANT_BOOL result = VARIANT_FALSE;
    const HRESULT code = preprocessor->PreprocessAndRun(Bstr(script).get(), &result);
    ran = result != VARIANT_FALSE;
    return code;
}

TraceTest::TraceTest() {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    wchar_t path[MAX_PATH];
    GetTempFileNameW(folder, L"kel", 0, path);
    file = path;
    session = newSession();
}

TraceTest::~TraceTest() {
    endSession();
    DeleteFileW(file.c_str());
}

ComPtr<ITraceSession> TraceTest::newSession() {
    return kel::test::kelTrace().create<ITraceSession>(__uuidof(TraceSession));
}

void TraceTest::startRecording(std::pair<CLSID, IUnknown*> other) {
    if (other.second) {
        const kel::test::ClassObject found(other.first, other.second);
        otherClass.first = other.first;
        CoGetClassObject(other.first, CLSCTX_INPROC_SERVER, nullptr,
                         IID_PPV_ARGS(&otherClass.second));
    }
    recordBench(*session.Get(), file);
    otherClass.second.Reset();
}

void TraceTest::startReplay(double speed) {
    session = newSession();
    ASSERT_EQ(session->Replay(bstr(file).get(), speed), S_OK);
}

void TraceTest::startCounting() {
    const BenchClasses classes;
    ASSERT_EQ(session->FailCall(1000000, E_FAIL), S_OK);
}

void TraceTest::endSession() {
    host.reset();
    if (!session) return;
    EXPECT_EQ(session->Close(), S_OK);
    session.Reset();
}

ComPtr<IKelCommunicator> TraceTest::attach() {
    ComPtr<IKelCommunicator> link;
    if (FAILED(session->Attach(nullptr, &link))) {
        const auto inner = bench::test::create<IKelCommunicator>(bench::test::kCommunicatorClass);
        EXPECT_EQ(session->Attach(inner.Get(), &link), S_OK);
    }
    return link;
}

void TraceTest::connectHost(const Bstr& port) {
    const auto stream = createStream<INetworkStream>(link::kNetworkStreamClass);
    ASSERT_TRUE(bench::test::connectTo(*stream.Get(), port));
    host = std::make_unique<Host>(attach().Get(), stream.Get());
}

std::string TraceTest::recording() const {
    std::ifstream stream(com::narrow(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::wstring TraceTest::difference() const {
    Bstr text;
    EXPECT_EQ(session->get_Difference(text.put()), S_OK);
    return std::wstring(text.view());
}

long TraceTest::callsLeft() const {
    long count = -1;
    EXPECT_EQ(session->get_CallsLeft(&count), S_OK);
    return count;
}

}  // namespace kel::trace::test
