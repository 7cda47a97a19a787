// Everything that can fail, fails; the object stays usable and nothing is leaked.

#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/refusals.h"

namespace kel::test {
namespace {

using FailureTest = PreprocessorTest;

// Uses every kind of call on the link, the error report last.
constexpr std::wstring_view kScript =
    L"@n=SERIALNUMBER()\nset %n ##BEEP()\n#WAIT\n#WAIT_PROMPT\n#WAIT_OK\n#SENDBREAK\n#WAKEUP\n"
    L"#SETBAUDRATE 2400\n#SETCOMM\n#BEEP \"a\"\n#RUNSCRIPT kernel32.dll\n#NOBODY";

TEST_F(FailureTest, AnyFailingLinkCallEndsTheRunWithItsCode) {
    const auto directive = install(L"BEEP");
    const auto function = install(L"BEEP", true);
    directive->onCall = [](long, IFlatCollection*) { return Answer{}; };
    function->onCall = directive->onCall;
    com::check(preprocessor_->put_ScriptPath(com::Bstr(L"C:\\windows\\system32").get()));
    link_.reply = L"n: 5.";
    EXPECT_FALSE(runWide(kScript));
    const long calls = link_.callCount();
    ASSERT_GT(calls, 50);
    for (long i = 1; i <= calls; ++i) {
        SCOPED_TRACE(i);
        const long failing = link_.callCount() + i;
        link_.failCall(i, E_ABORT);
        VARIANT_BOOL result = VARIANT_TRUE;
        EXPECT_EQ(preprocessor_->PreprocessAndRun(com::Bstr(kScript).get(), &result), E_ABORT);
        EXPECT_EQ(result, VARIANT_FALSE);
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
        EXPECT_FALSE(isReading());
        EXPECT_EQ(lastDiagnostic(), text);
    }
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

TEST_F(FailureTest, TextsOfAnyContentGoThrough) {
    EXPECT_TRUE(runWide({L"a\0b", 3}));
    EXPECT_NE(link_.takeWork().find("\"a\\0b\""), std::string::npos);
    EXPECT_TRUE(runWide(L"x\xD800y\xDC00"));
    EXPECT_NE(link_.takeWork().find("\"x?y?\""), std::string::npos);
    EXPECT_TRUE(runWide({L"#\0 \xDFFF(", 5}));
    EXPECT_EQ(link_.takeWork(), report("Syntax error ')'"));
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(preprocessor_->PreprocessAndRun(nullptr, &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
}

}  // namespace
}  // namespace kel::test
