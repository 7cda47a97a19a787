// What a host learns and sets from outside: events, checks, answers, variables.
#include <olectl.h>

#include "com/variant.h"
#include "tests/wine/script/preprocessor_fixture.h"

namespace kel::test {
namespace {

// A sink that writes down the events it gets.
class Sink final : public com::Object<Sink, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};

    std::string events;
    std::function<HRESULT(DISPID member)> onEvent = [](DISPID) { return S_OK; };

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                        EXCEPINFO*, UINT*) override {
        events += std::to_string(member);
        for (UINT i = arguments->cArgs; i-- > 0;) {
            const VARIANT& argument = arguments->rgvarg[i];
            events += " " + (argument.vt == VT_DISPATCH ? parameters(argument.pdispVal)
                                                        : com::Variant(argument).toText());
        }
        events += "\n";
        return onEvent(member);
    }

private:
    static std::string parameters(IDispatch* object) {
        com::ComPtr<IFlatCollection> collection;
        long count = 0;
        com::check(object->QueryInterface(IID_PPV_ARGS(&collection)));
        com::check(collection->get_Count(&count));
        return "(" + std::to_string(count) + ")";
    }
};

class ControlTest : public PreprocessorTest {
protected:
    DWORD advise(IUnknown* sink) {
        com::check(preprocessor_.As(&container_));
        com::check(container_->FindConnectionPoint(DIID__IPreprocessorEvents, &point_));
        DWORD cookie = 0;
        com::check(point_->Advise(sink, &cookie));
        return cookie;
    }

    // "line:column severity message", an entry a line.
    std::string show(IScriptDiagnostics* diagnostics) {
        long count = 0;
        com::check(diagnostics->get_Count(&count));
        std::string text;
        for (long i = 0; i < count; ++i) {
            com::ComPtr<IScriptDiagnostic> diagnostic;
            long line = 0;
            long column = 0;
            ScriptSeverity severity;
            com::Bstr message;
            com::check(diagnostics->get_Item(i, &diagnostic));
            com::check(diagnostic->get_Line(&line));
            com::check(diagnostic->get_Column(&column));
            com::check(diagnostic->get_Severity(&severity));
            com::check(diagnostic->get_Message(message.put()));
            text += std::to_string(line) + ":" + std::to_string(column) +
                    (severity == ScriptError ? " error " : " warning ") +
                    com::narrow(message.get()) + "\n";
        }
        return text;
    }

    std::string lastRun() {
        com::ComPtr<IScriptDiagnostics> diagnostics;
        com::check(preprocessor_->get_Diagnostics(&diagnostics));
        return show(diagnostics.Get());
    }

    void answer(const wchar_t* name, const wchar_t* text) {
        com::check(preprocessor_->SetAnswer(com::Bstr(std::wstring_view(name)).get(),
                                            com::Bstr(std::wstring_view(text)).get()));
    }

    com::ComPtr<IConnectionPointContainer> container_;
    com::ComPtr<IConnectionPoint> point_;
};

TEST_F(ControlTest, EventsTellTheWholeRun) {
    const auto sink = com::makeObject<Sink>();
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

TEST_F(ControlTest, ASinkMayFailCancelAndLeave) {
    const auto sink = com::makeObject<Sink>();
    const auto other = com::makeObject<Sink>();
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
    const auto sink = com::makeObject<Sink>();
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

TEST_F(ControlTest, CheckTellsAllAndDoesNothing) {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(preprocessor_->Check(com::Bstr(L"#IF a==b\nsend %x\n#FOO 'a").get(), &found));
    EXPECT_EQ(show(found.Get()),
              "1:1 error Invalid syntax in #IF statement\n1:1 warning #IF without #ENDIF\n"
              "2:7 warning Variable not found: x\n3:6 error Unterminated string\n");
    long errors = 0;
    com::check(found->get_ErrorCount(&errors));
    EXPECT_EQ(errors, 2);
    com::ComPtr<IScriptDiagnostic> none;
    EXPECT_EQ(found->get_Item(4, &none), DISP_E_BADINDEX);
    EXPECT_TRUE(link_.calls.empty());
    EXPECT_EQ(lastRun(), "");
}

// Also where the dialogue says nothing.
TEST_F(ControlTest, DiagnosticsTellWhereARunEnded) {
    link_.answers["Link.WakeUpInstrument"] = {false};
    EXPECT_FALSE(run("@a=1\n#WAKEUP"));
    EXPECT_EQ(lastRun(), "2:1 error The directive failed: WAKEUP\n");
    EXPECT_TRUE(run("@a=1"));
    EXPECT_EQ(lastRun(), "");
}

TEST_F(ControlTest, UnattendedRunsTakeTheirAnswers) {
    com::check(preprocessor_->put_Unattended(VARIANT_TRUE));
    answer(L"msgbox", L"ok");
    answer(L"depth", L"12");
    answer(L"Burst", L"0");
    EXPECT_TRUE(
        run("#MSGBOX ready\n@depth=input(\"How deep\")\n#DIALOG\ncheck(\"Burst\")\n"
            "#ENDDIALOG\nset %depth"));
    EXPECT_NE(link_.takeWork().find("WriteString \"set 12\""), std::string::npos);
    EXPECT_FALSE(run("#DIALOG\nmode=select(\"Mode\",\"a\")\n#ENDDIALOG"));
    EXPECT_NE(lastRun().find("No answer was set for mode"), std::string::npos) << lastRun();
    answer(L"msgbox", L"cancel");
    EXPECT_FALSE(run("#MSGBOX"));
    EXPECT_EQ(lastRun(), "1:1 error Execution canceled!\n");
    answer(L"msgbox", L"maybe");
    EXPECT_FALSE(run("#MSGBOX"));
    EXPECT_EQ(lastRun(), "1:1 error No answer was set for msgbox\n");
}

TEST_F(ControlTest, VariablesAreReachedFromOutside) {
    const com::Bstr name(L"Depth");
    com::Bstr value;
    EXPECT_EQ(preprocessor_->get_Variable(name.get(), value.put()), DISP_E_BADINDEX);
    com::check(preprocessor_->put_Variable(name.get(), com::Bstr(L"12").get()));
    EXPECT_TRUE(run("@depth=13\n@b=depth"));
    com::check(preprocessor_->get_Variable(com::Bstr(L"B").get(), value.put()));
    EXPECT_EQ(value.view(), L"13");

    com::ComPtr<IFlatCollection> variables;
    com::check(preprocessor_->get_Variables(&variables));
    com::Bstr first;
    com::check(variables->get_Name(0, first.put()));
    EXPECT_EQ(first.view(), L"Depth");

    HRESULT whileRunning = S_OK;
    link_.onCall = [&](const std::string&) { whileRunning = preprocessor_->ClearVariables(); };
    EXPECT_TRUE(run("@c=1"));
    EXPECT_EQ(whileRunning, HRESULT_FROM_WIN32(ERROR_BUSY));
    com::check(preprocessor_->ClearVariables());
    EXPECT_FALSE(run("%depth"));
}

}  // namespace
}  // namespace kel::test
