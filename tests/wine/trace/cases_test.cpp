// Cases of the link's objects in trace sessions.
#include <fstream>

#include "hosts/trace/KelTrace.h"
#include "tests/wine/link/link_case.h"
#include "tests/wine/support/import_patch.h"

namespace kel::trace::test {
namespace {

using com::Bstr;
using com::ComPtr;
using kel::test::EventSink;
using kel::test::kelTrace;

// What an object may be, besides what all are.
const std::pair<const char*, IID> kInterfaces[] = {
    {"IKelStream", __uuidof(IKelStream)},
    {"ISerialStream", __uuidof(ISerialStream)},
    {"INetworkStream", __uuidof(INetworkStream)},
    {"IKelCommunicator", __uuidof(IKelCommunicator)},
    {"IBinaryCommunicator", __uuidof(IBinaryCommunicator)},
    {"IRecorderAccess", __uuidof(IRecorderAccess)},
    {"IConnectionPointContainer", IID_IConnectionPointContainer},
    {"IAgileObject", IID_IAgileObject},
    {"IMarshal", IID_IMarshal}};

// Stands for the platform, which would find the bench's classes if they were registered.
HRESULT WINAPI benchClassObject(REFCLSID identifier, DWORD, COSERVERINFO*, REFIID iid,
                                void** result) {
    return kel::test::benchLink().classObject(identifier, iid, result);
}

class TracedCase : public bench::test::LinkCase {
protected:
    TracedCase() {
        names_["$trace"] = com::narrow(file_);
        classes_["session"] = __uuidof(TraceSession);
        classes_["preprocessor"] = __uuidof(Preprocessor);
    }
    ~TracedCase() override { end(); }

    // "record", "replay SPEED" or "count", which is neither, begins a session, "bare" does without
    // one; objects and $folder are new then.
    void begin(const std::string& kind) {
        end();
        isReplay_ = kind.starts_with("replay ");
        if (kind != "bare") session_ = kelTrace().create<ITraceSession>(__uuidof(TraceSession));
        if (isReplay_) {
            com::check(session_->Replay(Bstr(file_).get(), std::stod(kind.substr(7))), session_);
        } else if (session_) {
            const kel::test::ImportPatch classes(kelTrace().module(), "CoGetClassObject",
                                                 reinterpret_cast<void*>(&benchClassObject));
            com::check(kind == "record" ? session_->Record(Bstr(file_).get())
                                        : session_->FailCall(1000000, E_FAIL));
        }
        make();
        values_["$session"] = com::Variant(static_cast<IDispatch*>(session_.Get()));
        values_["$bare"] = com::Variant(static_cast<IDispatch*>(bare_.Get()));
        values_["$window"] = com::Variant(window.number());
        values_["$other"] = com::Variant(other_.number());
    }
    void end() {
        play("release");
        bare_.Reset();
        sinks_.clear();
        peer_.vanish();
        server.reset();
        window.clear();
        for (const std::wstring& name : folder_.names())
            DeleteFileW((folder_.path() + L"\\" + name).c_str());
        if (!session_) return;
        EXPECT_EQ(session_->Close(), S_OK);
        session_.Reset();
    }
    void expectReplayed() {
        Bstr difference;
        long left = 0;
        EXPECT_EQ(session_->get_Difference(difference.put()), S_OK);
        EXPECT_EQ(com::narrow(difference.view()), "");
        EXPECT_EQ(session_->get_CallsLeft(&left), S_OK);
        EXPECT_EQ(left, 0);
    }

    bool isReplay_ = false;

private:
    // Another sink of the object, whose events are told with its name.
    struct Sink {
        ComPtr<EventSink> sink;
        DWORD cookie = 7;
    };

    std::string act(const std::string& word, std::string rest) override {
        if (word == "bare" || word == "record" || word == "replay" || word == "count")
            return begin(rest.empty() ? word : word + " " + rest), "";
        if (word == "replayed") return expectReplayed(), "";
        if (word == "occurs") return occurs(rest) ? "yes" : "no";
        if (word == "change") return change(rest), "";
        if (word == "other")
            return "\"" + kel::test::escaped(com::narrow(other_.shown(), CP_UTF8)) + "\"";
        if (word == "same") return isSame(rest) ? "yes" : "no";
        if (word == "offers")
            return interfacesOf(rest.empty() ? object_.Get() : values_.at(rest).get().pdispVal);
        if (word == "advise") return advise(rest);
        if (word == "unadvise") return std::to_string(point()->Unadvise(sinks_.at(rest).cookie));
        if (word == "sinks") return sinksOf(*point().Get());
        if (word == "held") return isHeld(*sinks_.at(rest).sink.Get()) ? "yes" : "no";
        return LinkCase::act(word, rest);
    }

    Bstr startInstrument(bench::InstrumentOptions options, double instrumentScale) override {
        if (!isReplay_) port_ = LinkCase::startInstrument(std::move(options), instrumentScale);
        return Bstr(port_.view());
    }
    void acceptPeer() override {
        if (!isReplay_) peer_.accept();
    }

    ComPtr<IDispatch> newObject(REFCLSID identifier) override {
        ComPtr<IDispatch> object;
        if (identifier == __uuidof(Preprocessor))
            return kel::test::kelUtils().create<IDispatch>(identifier);
        if (identifier == __uuidof(TraceSession)) return kelTrace().create<IDispatch>(identifier);
        if (!session_) return LinkCase::newObject(identifier);
        if (identifier != bench::test::kCommunicatorClass) {
            com::check(
                CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)));
            return object;
        }
        ComPtr<IKelCommunicator> traced;
        if (!isReplay_) bare_ = bench::test::create<IKelCommunicator>(identifier);
        com::check(session_->Attach(bare_.Get(), &traced));
        com::check(traced.As(&object));
        return object;
    }

    bool occurs(const std::string& text) const {
        return kel::test::TemporaryFile::bytesOf(file_).find(text) != std::string::npos;
    }
    // "FROM | TO" in the recording.
    void change(const std::string& line) const {
        const auto [from, to] = bench::test::halves(line);
        std::string text = kel::test::TemporaryFile::bytesOf(file_);
        bench::test::replace(text, from, to);
        std::ofstream(file_.c_str(), std::ios::binary) << text;
    }

    bool isSame(std::string names) const {
        const VARIANT& one = values_.at(kel::test::takeWord(names)).get();
        const VARIANT& two = values_.at(names).get();
        if (one.vt != two.vt) return false;
        return one.vt == VT_DISPATCH ? one.pdispVal == two.pdispVal : one.lVal == two.lVal;
    }
    static std::string interfacesOf(IUnknown* object) {
        std::string names;
        ComPtr<IUnknown> found;
        for (const auto& [name, iid] : kInterfaces)
            if (SUCCEEDED(object->QueryInterface(
                    iid, reinterpret_cast<void**>(found.ReleaseAndGetAddressOf()))))
                names += std::string(names.empty() ? "" : " ") + name;
        return names.empty() ? "none" : names;
    }

    ComPtr<IConnectionPoint> point() {
        return kel::test::eventsOf(object_.Get(), DIID__IFirmwareUploaderEvents);
    }
    // What the source answers, and the cookie where it refuses what is no sink.
    std::string advise(std::string line) {
        const std::string name = kel::test::takeWord(line);
        if (name == "nothing" || name == "itself") {
            DWORD cookie = 7;
            const auto source = point();
            const HRESULT code = source->Advise(name == "itself" ? source.Get() : nullptr, &cookie);
            return std::to_string(code) + " " + std::to_string(cookie);
        }
        Sink& added = sinks_[name];
        added.sink = com::makeObject<EventSink>();
        added.sink->onEvent = [this, name, fails = line == "fails",
                               sink = added.sink.Get()](DISPID) {
            sink->answer = sink_->answer;
            sink_->events += name + ": " + std::exchange(sink->events, {});
            doInside();
            return fails ? E_FAIL : S_OK;
        };
        return std::to_string(point()->Advise(added.sink->controlling(), &added.cookie));
    }
    // Whether anybody else has a reference.
    static bool isHeld(EventSink& sink) {
        sink.AddRef();
        return sink.Release() > 1;
    }
    // The names of those that hear it, in their order; "first" is the one that all objects have.
    std::string sinksOf(IConnectionPoint& source) {
        ComPtr<IConnectionPointContainer> container;
        ComPtr<IDispatch> same;
        com::check(source.GetConnectionPointContainer(&container));
        EXPECT_EQ(container.As(&same), S_OK);
        EXPECT_EQ(same.Get(), object_.Get());
        ComPtr<IEnumConnections> connections;
        com::check(source.EnumConnections(&connections));
        std::string names;
        for (CONNECTDATA each{}; connections->Next(1, &each, nullptr) == S_OK;) {
            if (each.pUnk == static_cast<IDispatch*>(sink_)) names += " first";
            for (const auto& [name, known] : sinks_)
                if (each.pUnk == static_cast<IDispatch*>(known.sink.Get())) names += " " + name;
            each.pUnk->Release();
        }
        return "heard by" + names;
    }

    const kel::test::TemporaryFolder recordings_;
    const std::wstring file_ = recordings_.path() + L"\\trace";
    ComPtr<ITraceSession> session_;
    ComPtr<IKelCommunicator> bare_;
    Bstr port_;
    bench::test::TestWindow other_;
    std::map<std::string, Sink> sinks_;
};

TEST_P(TracedCase, IsReplayedAsItWasRecorded) {
    for (const char* kind : {"bare", "record", "replay 0", "replay 1"}) {
        SCOPED_TRACE(kind);
        begin(kind);
        playSteps();
        if (isReplay_) expectReplayed();
    }
}

INSTANTIATE_TEST_SUITE_P(Trace, TracedCase,
                         testing::ValuesIn(kel::test::readCases("tests/wine/trace/cases.txt")),
                         testing::PrintToStringParamName());

class SessionCase : public TracedCase {};

TEST_P(SessionCase, ShowsWhatIsExpected) {
    playSteps();
}

INSTANTIATE_TEST_SUITE_P(Session, SessionCase,
                         testing::ValuesIn(kel::test::readCases("tests/wine/trace/sessions.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::trace::test
