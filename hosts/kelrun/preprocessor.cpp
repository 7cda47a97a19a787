#include "hosts/kelrun/preprocessor.h"

#include "com/text.h"
#include "com/variant.h"
#include "hosts/kelrun/create.h"
#include "hosts/kelrun/model/failure.h"
#include "hosts/kelrun/script_file.h"

namespace kel::kelrun {
namespace {

constexpr char kProgramIdentifier[] = "KelUtils.Preprocessor";
constexpr char kRemedy[] = "run regsvr32 KelUtils.dll";

std::string utf8(std::wstring_view text) {
    return com::narrow(text, CP_UTF8);
}

std::string textOf(const com::ComPtr<IScriptDiagnostic>& source,
                   HRESULT (STDMETHODCALLTYPE IScriptDiagnostic::*get)(BSTR*)) {
    com::Bstr text;
    com::check((source.Get()->*get)(text.put()), source);
    return utf8(text.view());
}

long countOf(const auto& collection) {
    long count = 0;
    com::check(collection->get_Count(&count), collection);
    return count;
}

Diagnostic read(const com::ComPtr<IScriptDiagnostic>& source) {
    long line = 0;
    long column = 0;
    ScriptSeverity severity = ScriptError;
    com::check(source->get_Line(&line), source);
    com::check(source->get_Column(&column), source);
    com::check(source->get_Severity(&severity), source);
    return {textOf(source, &IScriptDiagnostic::get_ScriptName), static_cast<std::size_t>(line),
            static_cast<std::size_t>(column), severity == ScriptError,
            textOf(source, &IScriptDiagnostic::get_Message)};
}

std::vector<Diagnostic> read(const com::ComPtr<IScriptDiagnostics>& source) {
    std::vector<Diagnostic> diagnostics;
    const long count = countOf(source);
    for (long i = 0; i < count; ++i) {
        com::ComPtr<IScriptDiagnostic> diagnostic;
        com::check(source->get_Item(i, &diagnostic), source);
        diagnostics.push_back(read(diagnostic));
    }
    return diagnostics;
}

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
    return utf8(com::widen(com::narrow(com::widen(script_, CP_UTF8))));
}

std::vector<Diagnostic> Preprocessor::check(std::wstring_view script) const {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(control_->Check(com::Bstr(script).get(), &found), control_);
    std::vector<Diagnostic> diagnostics = read(found);
    for (Diagnostic& diagnostic : diagnostics)
        diagnostic.file = script_;  // the only one, whatever the code page has made of its name
    return diagnostics;
}

std::vector<Diagnostic> Preprocessor::lastRun() const {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(control_->get_Diagnostics(&found), control_);
    return read(found);
}

std::vector<NamedText> Preprocessor::variables() const {
    com::ComPtr<IFlatCollection> source;
    com::check(control_->get_Variables(&source), control_);
    std::vector<NamedText> variables;
    const long count = countOf(source);
    for (long i = 0; i < count; ++i) {
        com::Bstr name;
        com::Variant value;
        com::check(source->get_Name(i, name.put()), source);
        com::check(source->get_Item(com::Variant(i).get(), value.put()), source);
        const com::Variant text = value.convertedTo(VT_BSTR);
        variables.push_back({utf8(name.view()), utf8(com::view(text.get().bstrVal))});
    }
    return variables;
}

}  // namespace kel::kelrun
