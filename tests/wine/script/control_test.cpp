// What a host learns and sets from outside, beyond what the cases tell: events, variables.
#include <olectl.h>

#include "com/variant.h"
#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/event_sink.h"

namespace kel::test {
namespace {

class ControlTest : public PreprocessorTest {
protected:
    DWORD advise(IUnknown* sink) {
        com::check(preprocessor_.As(&container_));
        point_ = eventsOf(preprocessor_.Get(), DIID__IPreprocessorEvents);
        DWORD cookie = 0;
        com::check(point_->Advise(sink, &cookie));
        return cookie;
    }

    com::ComPtr<IConnectionPointContainer> container_;
    com::ComPtr<IConnectionPoint> point_;
};

TEST_F(ControlTest, EventsTellTheWholeRun) {
    const auto sink = com::makeObject<EventSink>();
    const DWORD cookie = advise(sink->controlling());
    com::check(preprocessor_->put_ScriptName(com::Bstr(L"a.kel").get()));
    EXPECT_FALSE(run("@v=1\nline %v\n#SENDBREAK\n%no"));
    EXPECT_EQ(sink->events,
              "1 a.kel 1\n3 a.kel 1\n6 v 1\n3 a.kel 2\n4 line 1\n3 a.kel 3\n5 SENDBREAK (0)\n"
              "3 a.kel 4\n7 a.kel 4 2 Variable not found: no\n2 a.kel 1 False\n");
    com::check(point_->Unadvise(cookie));
    EXPECT_EQ(point_->Unadvise(cookie), CONNECT_E_NOCONNECTION);
    sink->events.clear();
    EXPECT_TRUE(run("@v=1"));
    EXPECT_EQ(sink->events, "");
}

// Also one that a word of the host sends.
TEST_F(ControlTest, ALineIsToldBeforeThePauseThatFollowsIt) {
    const auto sink = com::makeObject<EventSink>();
    advise(sink->controlling());
    std::string calls;
    sink->onEvent = [&](DISPID member) {
        if (member == 4) calls += link_.calls.back() + "\n";
        return S_OK;
    };
    const auto extension = install(L"SEND");
    extension->onCall = [&](long, IFlatCollection*) -> Answer {
        com::ComPtr<IPreprocessor2> lines;
        VARIANT_BOOL sent = VARIANT_FALSE;
        com::check(preprocessor_.As(&lines));
        com::check(lines->Send(com::Bstr(L"two").get(), &sent));
        return {true, sent == VARIANT_TRUE};
    };
    EXPECT_TRUE(run("one\n#SEND"));
    EXPECT_EQ(calls, "WriteByte 13 0\nWriteByte 13 0\n");
    EXPECT_EQ(sink->events, "1  1\n3  1\n4 one\n3  2\n5 SEND (0)\n4 two\n2  1 True\n");
}

TEST_F(ControlTest, ASinkMayFailCancelAndLeave) {
    const auto sink = com::makeObject<EventSink>();
    const auto other = com::makeObject<EventSink>();
    const DWORD cookie = advise(sink->controlling());
    advise(other->controlling());
    sink->onEvent = [&](DISPID member) {
        if (member == 3) {
            point_->Unadvise(cookie);
            preprocessor_->Cancel();
        }
        return E_FAIL;
    };
    EXPECT_FALSE(run("one\ntwo"));
    EXPECT_EQ(sink->events, "1  1\n3  1\n");
    EXPECT_NE(other->events.find("7  2 1 Execution cancelled!"), std::string::npos)
        << other->events;
}

TEST_F(ControlTest, ConnectionPointsFollowTheirProtocol) {
    const auto sink = com::makeObject<EventSink>();
    advise(sink->controlling());
    com::ComPtr<IConnectionPoint> found;
    EXPECT_EQ(container_->FindConnectionPoint(IID_IDispatch, &found), CONNECT_E_NOCONNECTION);
    DWORD cookie = 0;
    EXPECT_EQ(point_->Advise(nullptr, &cookie), E_POINTER);
    EXPECT_EQ(point_->Advise(point_.Get(), &cookie), CONNECT_E_CANNOTCONNECT);

    com::ComPtr<IEnumConnectionPoints> points;
    com::check(container_->EnumConnectionPoints(&points));
    IConnectionPoint* point[2];
    ULONG count = 0;
    EXPECT_EQ(points->Next(2, point, &count), S_FALSE);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(point[0], point_.Get());
    point[0]->Release();

    com::ComPtr<IEnumConnections> connections;
    com::check(point_->EnumConnections(&connections));
    CONNECTDATA data;
    EXPECT_EQ(connections->Next(1, &data, nullptr), S_OK);
    data.pUnk->Release();
    EXPECT_EQ(connections->Next(1, &data, nullptr), S_FALSE);
}

TEST_F(ControlTest, VariablesAreListedAndNotClearedDuringARun) {
    com::check(preprocessor_->put_Variable(com::Bstr(L"Depth").get(), nullptr));
    com::ComPtr<IFlatCollection> variables;
    com::check(preprocessor_->get_Variables(&variables));
    com::Bstr first;
    com::check(variables->get_Name(0, first.put()));
    EXPECT_EQ(first.view(), L"Depth");

    HRESULT whileRunning = S_OK;
    link_.onCall = [&](const std::string&) { whileRunning = preprocessor_->ClearVariables(); };
    EXPECT_TRUE(run("@c=1"));
    EXPECT_EQ(whileRunning, HRESULT_FROM_WIN32(ERROR_BUSY));
}

}  // namespace
}  // namespace kel::test
