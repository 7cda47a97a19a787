#include "hosts/kelrun/preprocessor.h"

#include "com/text.h"
#include "com/variant.h"
#include "hosts/shared/create.h"
#include "hosts/shared/diagnostics.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/script_file.h"

namespace kel::kelrun {
namespace {

constexpr char kProgramIdentifier[] = "KelUtils.Preprocessor";
constexpr char kRemedy[] = "run regsvr32 KelUtils.dll";

// Gives each pair to a member of the preprocessor.
void pass(const std::vector<NamedText>& texts, const std::string& option,
          const com::ComPtr<IPreprocessorControl>& control,
          HRESULT (STDMETHODCALLTYPE IPreprocessorControl::*put)(BSTR, BSTR)) {
    for (const NamedText& text : texts) {
        const com::Bstr name(text.name, CP_UTF8);
        const com::Bstr value(text.value, CP_UTF8);
        if (!fitsCodePage(name.view()) || !fitsCodePage(value.view())) {
            throw Failure(ExitCode::kUsage, option + " " + text.name +
                                                ": a character is not in the user's code page");
        }
        com::check((control.Get()->*put)(name.get(), value.get()), control);
    }
}

}  // namespace

Preprocessor::Preprocessor(const Options& options, std::wstring_view scriptFolder)
    : control_(create<IPreprocessorControl>(kProgramIdentifier, kRemedy)), script_(options.script) {
    const com::Bstr scriptPath =
        options.scriptPath ? com::Bstr(*options.scriptPath, CP_UTF8) : com::Bstr(scriptFolder);
    com::check(control_->put_ScriptPath(scriptPath.get()), control_);
    com::check(control_->put_SystemPath(com::Bstr(options.systemPath, CP_UTF8).get()), control_);
    com::check(control_->put_ScriptName(com::Bstr(script_, CP_UTF8).get()), control_);
    com::check(control_->put_Unattended(com::variantBool(!options.interactive)), control_);
    pass(options.variables, "--var", control_, &IPreprocessorControl::put_Variable);
    pass(options.answers, "--answer", control_, &IPreprocessorControl::SetAnswer);
}

std::string Preprocessor::scriptName() const {
    return com::narrow(com::widen(com::narrow(com::widen(script_, CP_UTF8))), CP_UTF8);
}

std::vector<Diagnostic> Preprocessor::check(std::wstring_view script) const {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(control_->Check(com::Bstr(script).get(), &found), control_);
    std::vector<Diagnostic> diagnostics = readDiagnostics(found);
    for (Diagnostic& diagnostic : diagnostics)
        diagnostic.file = script_;  // the only one, whatever the code page has made of its name
    return diagnostics;
}

std::vector<Diagnostic> Preprocessor::lastRun() const {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(control_->get_Diagnostics(&found), control_);
    return readDiagnostics(found);
}

std::vector<NamedText> Preprocessor::variables() const {
    return readVariables(control_);
}

}  // namespace kel::kelrun
