// Everything that can fail, fails; the object stays usable and nothing is leaked.

#include <olectl.h>

#include "tests/wine/script/fake_extension.h"
#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/refusals.h"

namespace kel::test {
namespace {

class FailureTest : public PreprocessorTest {
protected:
    // The message of the last diagnostic of the last run.
    std::string lastDiagnostic() const {
        com::ComPtr<IScriptDiagnostics> diagnostics;
        com::ComPtr<IScriptDiagnostic> last;
        long count = 0;
        com::Bstr message;
        com::check(preprocessor_->get_Diagnostics(&diagnostics));
        com::check(diagnostics->get_Count(&count));
        com::check(diagnostics->get_Item(count - 1, &last));
        com::check(last->get_Message(message.put()));
        return com::narrow(message.get());
    }
};

// A handler of another language that throws, as script engines tell it.
class Thrower final : public com::Object<Thrower, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO* exception,
                        UINT*) override {
        exception->bstrDescription = SysAllocString(L"no tide today");
        exception->scode = E_ABORT;
        return DISP_E_EXCEPTION;
    }
};

TEST_F(FailureTest, WhatAHandlerThrowsIsAnErrorOfTheScript) {
    const auto extender = kelUtils().create<IPreprocessorExtender>(CLSID_PreprocessorExtender);
    const auto thrower = com::makeObject<Thrower>();
    const com::Bstr word(L"tide");
    com::check(extender->put_Preprocessor(preprocessor_.Get()));
    com::check(extender->InstallDirective(word.get()));
    com::check(extender->InstallFunction(word.get()));
    com::check(extender->SetHandlers(thrower.Get(), thrower.Get()));
    for (const char* line : {"ver\n#TIDE\nsernum", "set ##tide(1)"}) {
        EXPECT_FALSE(run(line));
        EXPECT_EQ(lastDiagnostic(), "no tide today");
    }
    EXPECT_EQ(link_.takeWork().find("sernum"), std::string::npos);
    EXPECT_EQ(preprocessor_->TellError(com::Bstr(L"late").get()), E_UNEXPECTED);
}

// Uses every kind of call on the link, the error report last.
constexpr char kScript[] =
    "@n=SERIALNUMBER()\nset %n ##BEEP()\n#WAIT\n#WAIT_PROMPT\n#WAIT_OK\n#SENDBREAK\n#WAKEUP\n"
    "#SETBAUDRATE 2400\n#SETCOMM\n#BEEP \"a\"\n#RUNSCRIPT kernel32.dll\n#NOBODY";

TEST_F(FailureTest, AnyFailingLinkCallEndsTheRunWithItsCode) {
    const auto words = com::makeObject<FakeExtension>();
    const com::Bstr beep(L"BEEP");
    com::check(preprocessor_->InstallCustomDirective(beep.get(), words.Get(), 1));
    com::check(preprocessor_->InstallCustomFunction(beep.get(), words.Get(), 2));
    com::check(preprocessor_->put_ScriptPath(com::Bstr(L"C:\\windows\\system32").get()));
    com::ComPtr<IPreprocessor2> sink;
    com::check(preprocessor_.As(&sink));
    link_.reply = L"n: 5.";
    EXPECT_FALSE(run(kScript));
    const long calls = link_.callCount();
    ASSERT_GT(calls, 50);
    for (long i = 1; i <= calls; ++i) {
        SCOPED_TRACE(i);
        const long failing = link_.callCount() + i;
        link_.failCall(i, E_ABORT);
        EXPECT_FALSE(run(kScript, E_ABORT));
        EXPECT_EQ(link_.callCount(), failing);
        const auto error = takeError();
        ASSERT_TRUE(error);
        const std::string text = com::narrow(error->description);
        EXPECT_EQ(error->interfaceId,
                  text.find("demand: link1.") != text.npos      ? __uuidof(IKelCommunicator)
                  : text.find(".SetLineSettings(") != text.npos ? __uuidof(ISerialStream)
                                                                : __uuidof(IKelStream))
            << text;
        EXPECT_EQ(error->source, L"KelUtils.Preprocessor.1");
        VARIANT_BOOL reading = VARIANT_TRUE;
        EXPECT_EQ(sink->get_ReadingFromStream(&reading), S_OK);
        EXPECT_EQ(reading, VARIANT_FALSE);
        EXPECT_EQ(lastDiagnostic(), text);
    }
    words->onCall = [](const std::string&) { throw com::Error(E_ABORT, L"No sound"); };
    EXPECT_FALSE(run("#BEEP", E_ABORT));
    const auto error = takeError().value();
    EXPECT_EQ(error.description, L"No sound");
    EXPECT_EQ(error.interfaceId, IID_IPreprocessorExtension);
    EXPECT_TRUE(run("@a=1"));
}

int allocationsLeft = 0;

BSTR WINAPI allocateFew(const OLECHAR* text, UINT size) {
    return allocationsLeft-- == 0 ? nullptr : SysAllocStringLen(text, size);
}

TEST_F(FailureTest, AnyFailingTextAllocationEndsTheRun) {
    const ImportPatch patch(kelUtils().module(), "SysAllocStringLen",
                            reinterpret_cast<void*>(allocateFew));
    for (const std::wstring_view script : {L"line\n#WAIT 1\n#WAKEUP", L"@d=DATE(1)\nline %d"}) {
        bool sawOutOfMemory = false;
        bool sawReport = false;
        int failures = 0;
        for (allocationsLeft = 0;; allocationsLeft = failures) {
            VARIANT_BOOL result = VARIANT_TRUE;
            const HRESULT code = preprocessor_->PreprocessAndRun(com::Bstr(script).get(), &result);
            if (allocationsLeft >= 0) break;
            ++failures;
            EXPECT_TRUE(code == E_OUTOFMEMORY || code == S_OK) << std::hex << code;
            EXPECT_EQ(result, VARIANT_FALSE) << failures;
            sawOutOfMemory |= code == E_OUTOFMEMORY;
            sawReport |=
                link_.takeWork().find("Unable to create collection object") != std::string::npos;
        }
        EXPECT_GT(failures, 2);
        EXPECT_TRUE(sawOutOfMemory);
        EXPECT_TRUE(sawReport);
    }
}

TEST_F(FailureTest, NullResultsAreRefusedBeforeAnythingHappens) {
    com::ComPtr<IPreprocessorExtension> words;
    com::ComPtr<IPreprocessor2> sink;
    com::check(preprocessor_.As(&words));
    com::check(preprocessor_.As(&sink));
    expectNullPointersRefused(words.Get());
    EXPECT_EQ(sink->get_ReadingFromStream(nullptr), E_POINTER);
    EXPECT_EQ(sink->Send(com::Bstr(L"line").get(), nullptr), E_POINTER);
    const auto error = takeError();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->interfaceId, IID_IPreprocessor2);
    EXPECT_EQ(error->source, L"KelUtils.Preprocessor.1");
    EXPECT_NE(error->description, L"");
    EXPECT_EQ(link_.callCount(), 0);
}

TEST_F(FailureTest, ConnectionPointsFollowTheirProtocol) {
    const auto point = eventsOf(preprocessor_.Get(), DIID__IPreprocessorEvents);
    const auto sink = com::makeObject<EventSink>();
    com::ComPtr<IConnectionPointContainer> container;
    com::ComPtr<IConnectionPoint> found;
    com::check(preprocessor_.As(&container));
    EXPECT_EQ(container->FindConnectionPoint(IID_IDispatch, &found), CONNECT_E_NOCONNECTION);
    DWORD cookie = 0;
    EXPECT_EQ(point->Advise(nullptr, &cookie), E_POINTER);
    EXPECT_EQ(point->Advise(point.Get(), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(point->Advise(sink->controlling(), &cookie), S_OK);

    com::ComPtr<IEnumConnectionPoints> points;
    com::check(container->EnumConnectionPoints(&points));
    IConnectionPoint* each[2];
    ULONG count = 0;
    EXPECT_EQ(points->Next(2, each, &count), S_FALSE);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(each[0], point.Get());
    each[0]->Release();

    com::ComPtr<IEnumConnections> connections;
    com::check(point->EnumConnections(&connections));
    CONNECTDATA data;
    EXPECT_EQ(connections->Next(1, &data, nullptr), S_OK);
    data.pUnk->Release();
    EXPECT_EQ(connections->Next(1, &data, nullptr), S_FALSE);
}

}  // namespace
}  // namespace kel::test
