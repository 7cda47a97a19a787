#include "script/preprocessor.h"

#include <utility>

#include "com/variant.h"
#include "script/diagnostic_objects.h"
#include "script/flat_collection.h"
#include "script/line_sink.h"

namespace kel::script {

Preprocessor::Preprocessor()
    : interviewer_(rules_, parentWindow_, errorReport()),
      host_(state_, *this, directives_, functions_, interviewer_, errorReport()),
      session_(host_, variables_, rules_, observer_),
      runner_({state_, interviewer_, host_, scriptPath_, systemPath_, errorReport()}) {}

ErrorReport Preprocessor::errorReport() {
    return [this](std::string_view message, std::initializer_list<std::string_view> parts) {
        session_.report(message, parts);
    };
}

void Preprocessor::finalConstruct() {
    const WordHandler own = WordHandler::own(this);
    for (const CommandRunner::Word& word : CommandRunner::kDirectives) {
        directives_.add(com::narrow(std::wstring_view(word.name)), word.code, own);
    }
    for (const CommandRunner::Word& word : CommandRunner::kFunctions) {
        functions_.add(com::narrow(std::wstring_view(word.name)), word.code, own);
    }
}

HRESULT Preprocessor::get_ParentWindow(long* window) {
    return guarded<IPreprocessor>([&] { com::out(window) = parentWindow_; });
}

HRESULT Preprocessor::put_ParentWindow(long window) {
    parentWindow_ = window;
    return S_OK;
}

HRESULT Preprocessor::PreprocessAndRun(BSTR script, VARIANT_BOOL* result) {
    return guarded<IPreprocessor>([&] {
        com::out(result) = VARIANT_FALSE;
        if (isRunning() && !state_.mayNest) {
            throw com::Error(HRESULT_FROM_WIN32(ERROR_BUSY), L"A script is running already");
        }
        // The host may drop its last reference while the script runs.
        const com::KeepAlive alive(*this);
        const std::string name = com::narrow(isRunning() ? std::exchange(state_.nextScriptName, {})
                                                         : std::wstring(scriptName_.view()));
        const RunScope run(state_, communicator_);
        const std::string text = com::narrow(script);
        *result = com::variantBool(session_.run(text, name));
    });
}

HRESULT Preprocessor::get_Communicator(IKelCommunicator** communicator) {
    return guarded<IPreprocessorImpl>([&] {
        com::out(communicator) = nullptr;
        communicator_.CopyTo(communicator);
    });
}

HRESULT Preprocessor::put_Communicator(IKelCommunicator* communicator) {
    communicator_ = communicator;
    return S_OK;
}

HRESULT Preprocessor::get_SystemPath(BSTR* path) {
    return guarded<IPreprocessorImpl>([&] { com::out(path) = com::Bstr(systemPath_).release(); });
}

HRESULT Preprocessor::put_SystemPath(BSTR path) {
    return guarded<IPreprocessorImpl>([&] { systemPath_ = com::Bstr(com::view(path)); });
}

HRESULT Preprocessor::get_ScriptPath(BSTR* path) {
    return guarded<IPreprocessorImpl>([&] { com::out(path) = com::Bstr(scriptPath_).release(); });
}

HRESULT Preprocessor::put_ScriptPath(BSTR path) {
    return guarded<IPreprocessorImpl>([&] { scriptPath_ = com::Bstr(com::view(path)); });
}

HRESULT Preprocessor::InstallCustomFunction(BSTR name, IPreprocessorExtension* handler,
                                            int number) {
    return guarded<IPreprocessorImpl>(
        [&] { functions_.add(com::narrow(name), number, handlerFor(handler)); });
}

HRESULT Preprocessor::InstallCustomDirective(BSTR name, IPreprocessorExtension* handler,
                                             int number) {
    return guarded<IPreprocessorImpl>(
        [&] { directives_.add(com::narrow(name), number, handlerFor(handler)); });
}

HRESULT Preprocessor::TellError(BSTR message) {
    return guarded<IPreprocessorControl>([&] {
        if (!isRunning()) throw com::Error(E_UNEXPECTED, L"No script runs");
        session_.report(com::narrow(message));
    });
}

HRESULT Preprocessor::Cancel() {
    return guarded<IPreprocessorControl>([&] {
        if (!isRunning()) return;
        state_.cancelRequested = true;
        interviewer_.cancelQuestion();
    });
}

HRESULT Preprocessor::get_Cancelled(VARIANT_BOOL* cancelled) {
    return guarded<IPreprocessorControl>(
        [&] { com::out(cancelled) = com::variantBool(state_.cancelRequested); });
}

HRESULT Preprocessor::get_Running(VARIANT_BOOL* running) {
    return guarded<IPreprocessorControl>(
        [&] { com::out(running) = com::variantBool(isRunning()); });
}

HRESULT Preprocessor::get_ScriptName(BSTR* name) {
    return guarded<IPreprocessorControl>(
        [&] { com::out(name) = com::Bstr(scriptName_).release(); });
}

HRESULT Preprocessor::put_ScriptName(BSTR name) {
    return guarded<IPreprocessorControl>([&] { scriptName_ = com::Bstr(com::view(name)); });
}

HRESULT Preprocessor::Check(BSTR script, IScriptDiagnostics** diagnostics) {
    return guarded<IPreprocessorControl>([&] {
        com::out(diagnostics) = nullptr;
        *diagnostics = com::makeObject<DiagnosticList>(
                           session_.check(com::narrow(script), com::narrow(scriptName_.view())))
                           .Detach();
    });
}

HRESULT Preprocessor::get_Diagnostics(IScriptDiagnostics** diagnostics) {
    return guarded<IPreprocessorControl>([&] {
        com::out(diagnostics) = nullptr;
        *diagnostics = com::makeObject<DiagnosticList>(session_.diagnostics()).Detach();
    });
}

HRESULT Preprocessor::get_Unattended(VARIANT_BOOL* unattended) {
    return guarded<IPreprocessorControl>(
        [&] { com::out(unattended) = com::variantBool(interviewer_.isUnattended()); });
}

HRESULT Preprocessor::put_Unattended(VARIANT_BOOL unattended) {
    interviewer_.setUnattended(com::isTrue(unattended));
    return S_OK;
}

HRESULT Preprocessor::SetAnswer(BSTR name, BSTR answer) {
    return guarded<IPreprocessorControl>(
        [&] { interviewer_.setAnswer(com::narrow(name), com::narrow(answer)); });
}

HRESULT Preprocessor::get_Variable(BSTR name, BSTR* value) {
    return guarded<IPreprocessorControl>([&] {
        com::out(value) = nullptr;
        const std::string* found = variables_.find(com::narrow(name));
        if (!found) throw com::Error(DISP_E_BADINDEX, L"There is no such variable");
        *value = com::Bstr(std::string_view(*found)).release();
    });
}

HRESULT Preprocessor::put_Variable(BSTR name, BSTR value) {
    return guarded<IPreprocessorControl>(
        [&] { variables_.set(com::narrow(name), com::narrow(value)); });
}

HRESULT Preprocessor::ClearVariables() {
    return guarded<IPreprocessorControl>([&] {
        if (isRunning()) throw com::Error(HRESULT_FROM_WIN32(ERROR_BUSY), L"A script is running");
        variables_.clear();
    });
}

HRESULT Preprocessor::get_Variables(IFlatCollection** variables) {
    return guarded<IPreprocessorControl>([&] {
        com::out(variables) = nullptr;
        com::ComPtr<FlatCollection> collection = com::makeObject<FlatCollection>();
        for (std::size_t i = 0; i < variables_.size(); ++i) {
            collection->append(com::widen(variables_[i].name), variables_[i].value);
        }
        *variables = collection.Detach();
    });
}

HRESULT Preprocessor::Send(BSTR text, VARIANT_BOOL* result) {
    return guarded<IPreprocessor2>([&] {
        com::out(result) = VARIANT_FALSE;
        const com::KeepAlive alive(*this);
        const com::ComPtr<IKelCommunicator> link =
            isRunning() ? state_.communicator : communicator_;
        const auto tell = [&] { observer_.lineSent(com::narrow(text)); };
        *result = com::variantBool(sendLine(link, text, tell));
    });
}

HRESULT Preprocessor::get_ReadingFromStream(VARIANT_BOOL* reading) {
    return guarded<IPreprocessor2>([&] { com::out(reading) = com::variantBool(isRunning()); });
}

HRESULT Preprocessor::DirectiveHandler(IKelCommunicator* communicator, long directive,
                                       IFlatCollection* parameters, VARIANT_BOOL* handled,
                                       VARIANT_BOOL* result) {
    return guarded<IPreprocessorExtension>([&] {
        if (!handled || !result) throw com::Error(E_POINTER);
        *handled = VARIANT_TRUE;
        *result = VARIANT_TRUE;
        const com::KeepAlive alive(*this);
        const auto claim = claimStream(communicator);
        const CommandRunner::Outcome outcome =
            runner_.runDirective(communicator, directive, parameters);
        *handled = com::variantBool(outcome.handled);
        *result = com::variantBool(outcome.result);
        return outcome.code;
    });
}

HRESULT Preprocessor::FunctionHandler(IKelCommunicator* communicator, long function,
                                      IFlatCollection*, BSTR* value, VARIANT_BOOL* handled,
                                      VARIANT_BOOL* result) {
    return guarded<IPreprocessorExtension>([&] {
        if (!value || !handled || !result) throw com::Error(E_POINTER);
        *value = nullptr;
        *handled = VARIANT_TRUE;
        *result = VARIANT_TRUE;
        const com::KeepAlive alive(*this);
        const auto claim = claimStream(communicator);
        std::string text;
        const CommandRunner::Outcome outcome = runner_.runFunction(communicator, function, text);
        *value = com::Bstr(std::string_view(text)).release();
        *handled = com::variantBool(outcome.handled);
        *result = com::variantBool(outcome.result);
        return outcome.code;
    });
}

std::optional<RunScope> Preprocessor::claimStream(IKelCommunicator* communicator) {
    if (isRunning()) return std::nullopt;
    state_.cancelRequested = false;
    return std::optional<RunScope>(std::in_place, state_, communicator);
}

WordHandler Preprocessor::handlerFor(IPreprocessorExtension* extension) {
    if (!extension) throw com::Error(E_POINTER, L"A word needs a handler");
    com::ComPtr<IUnknown> identity;
    com::check(extension->QueryInterface(IID_PPV_ARGS(&identity)), extension);
    return identity.Get() == controlling() ? WordHandler::own(extension)
                                           : WordHandler::foreign(extension);
}

}  // namespace kel::script
