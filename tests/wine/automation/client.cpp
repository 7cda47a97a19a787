// A client that knows the library by its type library alone: its header is written from that.
#include "KelUtilsClient.h"

#include <cstdio>
#include <cwchar>

using namespace KELUTILSLib;

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    if (holds) return;
    std::printf("not so: %s\n", what);
    ++failures;
}

#define EXPECT(condition) expect(condition, #condition)

bool same(const wchar_t* left, const wchar_t* right) {
    return std::wcscmp(left, right) == 0;
}

void run() {
    const IMultiSelectDialogPtr dialog(__uuidof(MultiSelectDialog));
    dialog->Add(_bstr_t(L"Oxygen"), VARIANT_TRUE);
    dialog->PutName(0, _bstr_t(L"Salt"));
    EXPECT(same(dialog->GetName(0), L"Salt"));
    EXPECT(dialog->GetValue(_variant_t(L"salt")) == VARIANT_TRUE);
    try {
        dialog->GetName(1);
        EXPECT(!"an option that is not there");
    } catch (const _com_error& error) {
        EXPECT(error.Error() == DISP_E_BADINDEX);
        EXPECT(error.GUID_() == __uuidof(IMultiSelectDialog));
        EXPECT(same(error.Source(), L"KelUtils.MultiSelectDialog.1"));
        EXPECT(same(error.Description(), L"There is no option with this index"));
    }

    const IPreprocessorImplPtr preprocessor(__uuidof(Preprocessor));
    EXPECT(preprocessor->PreprocessAndRun(_bstr_t(L"@a=\"5\"")) == VARIANT_TRUE);
    preprocessor->PutParentWindow(12);
    EXPECT(preprocessor->GetParentWindow() == 12);
    const IPreprocessorControlPtr control = preprocessor;
    EXPECT(same(_bstr_t(control->GetVariables()->GetItem(_variant_t(0L))), L"5"));
    const IScriptDiagnosticPtr finding = control->Check(_bstr_t(L"#IF"))->GetItem(0);
    EXPECT(finding->GetSeverity() == ScriptError);
    EXPECT(finding->GetLine() == 1);
    EXPECT(IPreprocessor2Ptr(preprocessor)->GetReadingFromStream() == VARIANT_FALSE);

    const IKelTerminal3Ptr terminal(__uuidof(KelTerminal));
    terminal->PutBackColor(255);
    terminal->PutOutputLimit(5000);
    EXPECT(terminal->GetBackColor() == 255);
    EXPECT(terminal->GetOutputLimit() == 5000);
    const ICompassCalibDialog2Ptr compass(__uuidof(CompassCalibDialog));
    EXPECT(compass->GetFieldStrength() == 0);
    const IStatusDialog2Ptr status(__uuidof(StatusDialog));
    status->PutPosition(7);
    EXPECT(status->GetPosition() == 7);
    const IKelObjectsPtr objects(__uuidof(KelObjects));
    objects->PutItem(_bstr_t(L"status"), status);
    EXPECT(IStatusDialogPtr(objects->GetAt(_variant_t(0L))) == status);
}

}  // namespace

int main() {
    CoInitialize(nullptr);
    try {
        run();
    } catch (const _com_error& error) {
        std::printf("0x%08lx %ls\n", error.Error(),
                    static_cast<const wchar_t*>(error.Description()));
        ++failures;
    }
    CoUninitialize();
    return failures == 0 ? 0 : 1;
}
