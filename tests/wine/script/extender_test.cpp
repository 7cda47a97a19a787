// Words that a script of another language adds.
#include <optional>

#include "com/late_bound.h"
#include "com/variant.h"
#include "tests/wine/script/preprocessor_fixture.h"

namespace kel::test {
namespace {

constexpr wchar_t kHandlers[] =
    LR"(
function join(parameters) {
    var text = '';
    for (var i = 0; i < parameters.Count; ++i) text += '|' + parameters(i);
    return text;
}
var seen = '';
function runDirective(name, parameters) {
    seen += name + join(parameters) + ';';
    if (name == 'PASS') return;
    if (name == 'THROW') throw new Error('no tide today');
    return name == 'ODD' ? 'perhaps' : name != 'STOP';
}
function evaluate(name, parameters) {
    if (name == 'nothing') return;
    if (name == 'fails') noSuchThing();
    return name + join(parameters);
}
)";

// A handler that throws, as script engines tell it.
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

class ExtenderTest : public PreprocessorTest {
protected:
    ExtenderTest() {
        const auto host = kelUtils().create<IKelScript>(CLSID_KelScript);
        com::ComPtr<IDispatch> control;
        com::check(host->get_ScriptControl(&control));
        control_.emplace(control);
        control_->call(L"AddCode", {com::Variant(std::wstring_view(kHandlers))});
        EXPECT_EQ(extender_->InstallDirective(com::Bstr(L"EARLY").get()), E_INVALIDARG);
        com::check(extender_->put_Preprocessor(preprocessor_.Get()), extender_);
        for (const wchar_t* name : {L"PASS", L"THROW", L"STOP", L"GO", L"ODD"})
            com::check(extender_->InstallDirective(com::Bstr(std::wstring_view(name)).get()));
        for (const wchar_t* name : {L"join", L"nothing", L"fails"})
            com::check(extender_->InstallFunction(com::Bstr(std::wstring_view(name)).get()));
        const com::Variant directives = eval(L"runDirective");
        const com::Variant functions = eval(L"evaluate");
        com::check(extender_->SetHandlers(directives.get().pdispVal, functions.get().pdispVal));
    }

    com::Variant eval(std::wstring_view expression) {
        return control_->call(L"Eval", {com::Variant(expression)});
    }

    com::ComPtr<IPreprocessorExtender> extender_ =
        kelUtils().create<IPreprocessorExtender>(CLSID_PreprocessorExtender);
    std::optional<com::LateBound> control_;
};

TEST_F(ExtenderTest, HandlersGetNameAndParameters) {
    EXPECT_TRUE(run("@depth=\"12\"\n#GO %depth \"a b\"\nset ##join(depth, \"x\")"));
    EXPECT_EQ(eval(L"seen").toText(), "GO|12|a b;");
    EXPECT_NE(link_.takeWork().find("WriteString \"set join|12|x\""), std::string::npos);
}

TEST_F(ExtenderTest, AFalseAnswerStopsTheScript) {
    EXPECT_FALSE(run("#STOP\nver"));
    EXPECT_EQ(eval(L"seen").toText(), "STOP;");
    EXPECT_EQ(link_.takeWork().find("ver"), std::string::npos);
}

TEST_F(ExtenderTest, WhatIsPassedOnIsUnknown) {
    EXPECT_FALSE(run("#PASS"));
    EXPECT_FALSE(run("@x=nothing()"));
    EXPECT_TRUE(run("#GO"));
    com::check(extender_->SetHandlers(nullptr, nullptr));
    EXPECT_FALSE(run("#GO"));
}

TEST_F(ExtenderTest, AnExceptionIsAnErrorOfTheScript) {
    EXPECT_FALSE(run("ver\n#THROW\nsernum"));
    EXPECT_EQ(lastDiagnostic(), "The handler of THROW failed");
    EXPECT_FALSE(run("#ODD"));
    EXPECT_EQ(lastDiagnostic(), "The handler of ODD failed");
    EXPECT_FALSE(run("@x=fails()"));
    EXPECT_EQ(lastDiagnostic(), "The handler of fails failed");
    const auto thrower = com::makeObject<Thrower>();
    com::check(extender_->SetHandlers(thrower.Get(), thrower.Get()));
    for (const char* line : {"#GO", "set ##join(1)"}) {
        EXPECT_FALSE(run(line));
        EXPECT_EQ(lastDiagnostic(), "no tide today");
    }
    EXPECT_EQ(preprocessor_->TellError(com::Bstr(L"late").get()), E_UNEXPECTED);
}

}  // namespace
}  // namespace kel::test
