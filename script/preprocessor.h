#pragma once
// The Preprocessor component: runs instrument command scripts on a link.

#include <optional>

#include "com/connection_point.h"
#include "com/object.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "script/code_page_rules.h"
#include "script/command_runner.h"
#include "script/engine/session.h"
#include "script/event_observer.h"
#include "script/interviewer.h"
#include "script/link_host.h"
#include "script/run_state.h"
#include "script/word_handler.h"

namespace kel::script {

class Preprocessor final
    : public com::Object<Preprocessor,
                         com::Dual<IPreprocessorControl, IPreprocessorImpl, IPreprocessor>,
                         com::Events<&DIID__IPreprocessorEvents>, com::Plain<IPreprocessor2>,
                         com::Dual<IPreprocessorExtension>> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_Preprocessor, L"KelUtils.Preprocessor.1"};

    Preprocessor();

    // Installs the built-in words, with the object itself as their handler.
    void finalConstruct();

    // IPreprocessor
    STDMETHODIMP get_ParentWindow(long* window) override;
    STDMETHODIMP put_ParentWindow(long window) override;
    STDMETHODIMP PreprocessAndRun(BSTR script, VARIANT_BOOL* result) override;

    // IPreprocessorImpl
    STDMETHODIMP get_Communicator(IKelCommunicator** communicator) override;
    STDMETHODIMP put_Communicator(IKelCommunicator* communicator) override;
    STDMETHODIMP get_SystemPath(BSTR* path) override;
    STDMETHODIMP put_SystemPath(BSTR path) override;
    STDMETHODIMP get_ScriptPath(BSTR* path) override;
    STDMETHODIMP put_ScriptPath(BSTR path) override;
    STDMETHODIMP InstallCustomFunction(BSTR name, IPreprocessorExtension* handler,
                                       int number) override;
    STDMETHODIMP InstallCustomDirective(BSTR name, IPreprocessorExtension* handler,
                                        int number) override;

    // IPreprocessorControl
    STDMETHODIMP Cancel() override;
    STDMETHODIMP get_Cancelled(VARIANT_BOOL* cancelled) override;
    STDMETHODIMP get_Running(VARIANT_BOOL* running) override;
    STDMETHODIMP get_ScriptName(BSTR* name) override;
    STDMETHODIMP put_ScriptName(BSTR name) override;
    STDMETHODIMP Check(BSTR script, IScriptDiagnostics** diagnostics) override;
    STDMETHODIMP get_Diagnostics(IScriptDiagnostics** diagnostics) override;
    STDMETHODIMP get_Unattended(VARIANT_BOOL* unattended) override;
    STDMETHODIMP put_Unattended(VARIANT_BOOL unattended) override;
    STDMETHODIMP SetAnswer(BSTR name, BSTR answer) override;
    STDMETHODIMP get_Variable(BSTR name, BSTR* value) override;
    STDMETHODIMP put_Variable(BSTR name, BSTR value) override;
    STDMETHODIMP ClearVariables() override;
    STDMETHODIMP get_Variables(IFlatCollection** variables) override;
    STDMETHODIMP TellError(BSTR message) override;

    // IPreprocessor2
    STDMETHODIMP Send(BSTR text, VARIANT_BOOL* result) override;
    STDMETHODIMP get_ReadingFromStream(VARIANT_BOOL* reading) override;

    // IPreprocessorExtension: the built-in words
    STDMETHODIMP DirectiveHandler(IKelCommunicator* communicator, long directive,
                                  IFlatCollection* parameters, VARIANT_BOOL* handled,
                                  VARIANT_BOOL* result) override;
    STDMETHODIMP FunctionHandler(IKelCommunicator* communicator, long function,
                                 IFlatCollection* parameters, BSTR* value, VARIANT_BOOL* handled,
                                 VARIANT_BOOL* result) override;

private:
    ErrorReport errorReport();
    bool isRunning() const { return state_.depth > 0; }
    WordHandler handlerFor(IPreprocessorExtension* extension);

    // A handler called from outside a run waits on the stream as a run does.
    std::optional<RunScope> claimStream(IKelCommunicator* communicator);

    com::ComPtr<IKelCommunicator> communicator_;
    long parentWindow_ = 0;
    com::Bstr systemPath_;
    com::Bstr scriptPath_;
    com::Bstr scriptName_;

    RunState state_;
    CodePageRules rules_;
    VariableStore variables_{rules_};
    WordHandlers directives_{rules_};
    WordHandlers functions_{rules_};
    EventObserver observer_{events_};
    Interviewer interviewer_;
    LinkHost host_;
    Session session_;
    CommandRunner runner_;
};

}  // namespace kel::script
