#pragma once
// What a check or a run has to tell, as automation objects.

#include <vector>

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "script/engine/diagnostic.h"

namespace kel::script {

class DiagnosticObject final : public com::Object<DiagnosticObject, com::Dual<IScriptDiagnostic>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"KelUtils.Preprocessor.1"};

    explicit DiagnosticObject(Diagnostic diagnostic) : diagnostic_(std::move(diagnostic)) {}

    STDMETHODIMP get_ScriptName(BSTR* name) override;
    STDMETHODIMP get_Line(long* line) override;
    STDMETHODIMP get_Column(long* column) override;
    STDMETHODIMP get_Severity(ScriptSeverity* severity) override;
    STDMETHODIMP get_Message(BSTR* message) override;

private:
    Diagnostic diagnostic_;
};

// A list as it was when it was asked for.
class DiagnosticList final : public com::Object<DiagnosticList, com::Dual<IScriptDiagnostics>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"KelUtils.Preprocessor.1"};

    explicit DiagnosticList(std::vector<Diagnostic> diagnostics)
        : diagnostics_(std::move(diagnostics)) {}

    STDMETHODIMP get_Count(long* count) override;
    STDMETHODIMP get_Item(long index, IScriptDiagnostic** diagnostic) override;
    STDMETHODIMP get_ErrorCount(long* count) override;
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override;

private:
    com::ComPtr<IScriptDiagnostic> at(std::size_t index) const;

    std::vector<Diagnostic> diagnostics_;
};

}  // namespace kel::script
