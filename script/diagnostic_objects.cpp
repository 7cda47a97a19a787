#include "script/diagnostic_objects.h"

#include <algorithm>

#include "com/text.h"
#include "com/variant_enumerator.h"

namespace kel::script {

HRESULT DiagnosticObject::get_ScriptName(BSTR* name) {
    return guarded<IScriptDiagnostic>(
        [&] { com::out(name) = com::Bstr(std::string_view(diagnostic_.script)).release(); });
}

HRESULT DiagnosticObject::get_Line(long* line) {
    return guarded<IScriptDiagnostic>(
        [&] { com::out(line) = static_cast<long>(diagnostic_.line); });
}

HRESULT DiagnosticObject::get_Column(long* column) {
    return guarded<IScriptDiagnostic>(
        [&] { com::out(column) = static_cast<long>(diagnostic_.column); });
}

HRESULT DiagnosticObject::get_Severity(ScriptSeverity* severity) {
    return guarded<IScriptDiagnostic>([&] {
        com::out(severity) = diagnostic_.severity == Severity::Error ? ScriptError : ScriptWarning;
    });
}

HRESULT DiagnosticObject::get_Message(BSTR* message) {
    return guarded<IScriptDiagnostic>(
        [&] { com::out(message) = com::Bstr(std::string_view(diagnostic_.message)).release(); });
}

HRESULT DiagnosticList::get_Count(long* count) {
    return guarded<IScriptDiagnostics>(
        [&] { com::out(count) = static_cast<long>(diagnostics_.size()); });
}

HRESULT DiagnosticList::get_Item(long index, IScriptDiagnostic** diagnostic) {
    return guarded<IScriptDiagnostics>([&] {
        com::out(diagnostic) = nullptr;
        if (index < 0 || static_cast<std::size_t>(index) >= diagnostics_.size()) {
            throw com::Error(DISP_E_BADINDEX, L"There is no diagnostic with this index");
        }
        *diagnostic = at(index).Detach();
    });
}

HRESULT DiagnosticList::get_ErrorCount(long* count) {
    return guarded<IScriptDiagnostics>([&] {
        com::out(count) = static_cast<long>(std::count_if(
            diagnostics_.begin(), diagnostics_.end(),
            [](const Diagnostic& diagnostic) { return diagnostic.severity == Severity::Error; }));
    });
}

HRESULT DiagnosticList::get__NewEnum(IUnknown** enumerator) {
    return guarded<IScriptDiagnostics>([&] {
        com::out(enumerator) = nullptr;
        *enumerator = com::VariantEnumerator::make(
            controlling(), [this] { return static_cast<ULONG>(diagnostics_.size()); },
            [this](ULONG index) { return com::Variant(at(index).Get()); });
    });
}

com::ComPtr<IScriptDiagnostic> DiagnosticList::at(std::size_t index) const {
    return com::makeObject<DiagnosticObject>(diagnostics_[index]);
}

}  // namespace kel::script
