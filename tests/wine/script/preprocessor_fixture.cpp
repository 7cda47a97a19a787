#include "tests/wine/script/preprocessor_fixture.h"

#include "com/variant.h"

namespace kel::test {

HRESULT FakeExtension::DirectiveHandler(IKelCommunicator*, long number, IFlatCollection* parameters,
                                        VARIANT_BOOL* handled, VARIANT_BOOL* result) {
    const Answer answer = onCall(number, parameters);
    *handled = answer.handled;
    *result = answer.result;
    return answer.code;
}

HRESULT FakeExtension::FunctionHandler(IKelCommunicator*, long number, IFlatCollection* parameters,
                                       BSTR* value, VARIANT_BOOL* handled, VARIANT_BOOL* result) {
    const Answer answer = onCall(number, parameters);
    *value = com::Bstr(std::wstring_view(answer.value)).release();
    *handled = answer.handled;
    *result = answer.result;
    return answer.code;
}

PreprocessorTest::PreprocessorTest()
    : preprocessor_(kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor)) {
    com::check(preprocessor_->put_Communicator(link_.communicator()));
}

bool PreprocessorTest::run(std::string_view script) {
    return runWide(com::widen(script));
}

bool PreprocessorTest::runWide(std::wstring_view script) {
    VARIANT_BOOL result = 7;
    // The script itself may drop the last reference.
    IPreprocessorControl* preprocessor = preprocessor_.Get();
    EXPECT_EQ(preprocessor->PreprocessAndRun(com::Bstr(script).get(), &result), S_OK);
    EXPECT_TRUE(result == VARIANT_TRUE || result == VARIANT_FALSE) << result;
    return result != VARIANT_FALSE;
}

bool PreprocessorTest::isReading() const {
    com::ComPtr<IPreprocessor2> sink;
    VARIANT_BOOL reading = VARIANT_FALSE;
    com::check(preprocessor_.As(&sink));
    com::check(sink->get_ReadingFromStream(&reading));
    return reading == VARIANT_TRUE;
}

bool PreprocessorTest::isCancelled() const {
    VARIANT_BOOL cancelled = VARIANT_FALSE;
    com::check(preprocessor_->get_Cancelled(&cancelled));
    return cancelled == VARIANT_TRUE;
}

std::string PreprocessorTest::lastDiagnostic() const {
    com::ComPtr<IScriptDiagnostics> diagnostics;
    com::ComPtr<IScriptDiagnostic> last;
    long count = 0;
    com::Bstr message;
    com::check(preprocessor_->get_Diagnostics(&diagnostics));
    com::check(diagnostics->get_Count(&count));
    if (count == 0) return "";
    com::check(diagnostics->get_Item(count - 1, &last));
    com::check(last->get_Message(message.put()));
    return com::narrow(message.get());
}

com::ComPtr<FakeExtension> PreprocessorTest::install(const wchar_t* word, bool isFunction) {
    const auto extension = com::makeObject<FakeExtension>();
    const com::Bstr name{std::wstring_view(word)};
    constexpr int kNumber = 42;
    com::check(isFunction
                   ? preprocessor_->InstallCustomFunction(name.get(), extension.Get(), kNumber)
                   : preprocessor_->InstallCustomDirective(name.get(), extension.Get(), kNumber));
    return extension;
}

std::string PreprocessorTest::report(std::string_view message, std::string_view part) {
    std::string calls =
        std::string("Echo \"\\r\\nERROR: \"\nEcho \"").append(message).append("\"\n");
    if (!part.empty()) calls.append("Echo \" ").append(part).append("\"\n");
    return calls + "WriteString \"\" CR 0\n";
}

}  // namespace kel::test
