#include "hosts/shared/diagnostics.h"

#include "com/text.h"
#include "com/variant.h"

namespace kel::host {
namespace {

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

}  // namespace

std::vector<Diagnostic> readDiagnostics(const com::ComPtr<IScriptDiagnostics>& source) {
    std::vector<Diagnostic> diagnostics;
    const long count = countOf(source);
    for (long i = 0; i < count; ++i) {
        com::ComPtr<IScriptDiagnostic> diagnostic;
        com::check(source->get_Item(i, &diagnostic), source);
        diagnostics.push_back(read(diagnostic));
    }
    return diagnostics;
}

std::vector<NamedText> readVariables(const com::ComPtr<IPreprocessorControl>& preprocessor) {
    com::ComPtr<IFlatCollection> source;
    com::check(preprocessor->get_Variables(&source), preprocessor);
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

}  // namespace kel::host
