// A client that knows the library by its type library alone: its header is written from that.
#include "KelUtilsClient.h"

#include <cstdio>

namespace {

_COM_SMARTPTR_TYPEDEF(ISupportErrorInfo, __uuidof(ISupportErrorInfo));

int failures = 0;

#define EXPECT(condition) \
    if (!(condition)) ++failures, std::printf("not so: %s\n", #condition)

// Calls a member, or takes what it gives: call(object, &IThis::Do, 1),
// take<long>(object, &IThis::get_Count).
template <class Pointer, class Interface, class... Parameters, class... Given>
void call(const Pointer& object, HRESULT (__stdcall Interface::*member)(Parameters...),
          Given... given) {
    Interface* const called = object;
    const HRESULT code = (called->*member)(given...);
    if (SUCCEEDED(code)) return;
    const ISupportErrorInfoPtr support(called);
    IErrorInfo* told = nullptr;
    if (support && support->InterfaceSupportsErrorInfo(__uuidof(Interface)) == S_OK)
        GetErrorInfo(0, &told);
    throw _com_error(code, told);
}

template <class Result, class Pointer, class Member, class... Given>
Result take(const Pointer& object, Member member, Given... given) {
    Result result{};
    call(object, member, given..., &result);
    return result;
}

template <class Pointer, class Member, class... Given>
bool gives(const wchar_t* text, const Pointer& object, Member member, Given... given) {
    return _bstr_t(take<BSTR>(object, member, given...), false) == _bstr_t(text);
}

void run() {
    const IMultiSelectDialogPtr dialog(__uuidof(MultiSelectDialog));
    call(dialog, &IMultiSelectDialog::Add, _bstr_t(L"Oxygen").GetBSTR(), VARIANT_TRUE);
    call(dialog, &IMultiSelectDialog::put_Name, 0, _bstr_t(L"Salt").GetBSTR());
    EXPECT(gives(L"Salt", dialog, &IMultiSelectDialog::get_Name, 0));
    EXPECT(take<VARIANT_BOOL>(dialog, &IMultiSelectDialog::get_Value, _variant_t(L"salt")) ==
           VARIANT_TRUE);
    try {
        gives(L"", dialog, &IMultiSelectDialog::get_Name, 1);
        EXPECT(!"an option that is not there");
    } catch (const _com_error& error) {
        EXPECT(error.Error() == DISP_E_BADINDEX);
        EXPECT(error.GUID_() == __uuidof(IMultiSelectDialog));
        EXPECT(error.Source() == _bstr_t(L"KelUtils.MultiSelectDialog.1"));
        EXPECT(error.Description() == _bstr_t(L"There is no option with this index"));
    }

    const IPreprocessorControlPtr preprocessor(__uuidof(Preprocessor));
    EXPECT(take<VARIANT_BOOL>(preprocessor, &IPreprocessor::PreprocessAndRun,
                              _bstr_t(L"@a=\"5\"").GetBSTR()) == VARIANT_TRUE);
    call(preprocessor, &IPreprocessor::put_ParentWindow, 12);
    EXPECT(take<long>(preprocessor, &IPreprocessor::get_ParentWindow) == 12);
    const IFlatCollectionPtr variables(
        take<IFlatCollection*>(preprocessor, &IPreprocessorControl::get_Variables), false);
    VARIANT value = take<VARIANT>(variables, &IFlatCollection::get_Item, _variant_t(0L));
    EXPECT(_bstr_t(_variant_t(value, false)) == _bstr_t(L"5"));
    const IScriptDiagnosticsPtr findings(
        take<IScriptDiagnostics*>(preprocessor, &IPreprocessorControl::Check,
                                  _bstr_t(L"#IF").GetBSTR()),
        false);
    const IScriptDiagnosticPtr finding(
        take<IScriptDiagnostic*>(findings, &IScriptDiagnostics::get_Item, 0), false);
    EXPECT(take<ScriptSeverity>(finding, &IScriptDiagnostic::get_Severity) == ScriptError);
    EXPECT(take<long>(finding, &IScriptDiagnostic::get_Line) == 1);
    EXPECT(take<VARIANT_BOOL>(IPreprocessor2Ptr(preprocessor),
                              &IPreprocessor2::get_ReadingFromStream) == VARIANT_FALSE);

    const IKelTerminal3Ptr terminal(__uuidof(KelTerminal));
    call(terminal, &IKelTerminal::put_BackColor, 255);
    call(terminal, &IKelTerminal3::put_OutputLimit, 5000);
    EXPECT(take<OLE_COLOR>(terminal, &IKelTerminal::get_BackColor) == 255);
    EXPECT(take<long>(terminal, &IKelTerminal3::get_OutputLimit) == 5000);
    const ICompassCalibDialog2Ptr compass(__uuidof(CompassCalibDialog));
    EXPECT(take<double>(compass, &ICompassCalibDialog2::get_FieldStrength) == 0);
    const IStatusDialog2Ptr status(__uuidof(StatusDialog));
    call(status, &IStatusDialog2::put_Position, 7);
    EXPECT(take<long>(status, &IStatusDialog2::get_Position) == 7);
    const IKelObjectsPtr objects(__uuidof(KelObjects));
    call(objects, &IKelObjects::put_Item, _bstr_t(L"status").GetBSTR(),
         static_cast<IDispatch*>(status));
    IDispatch* const held = take<IDispatch*>(objects, &IKelObjects::get_At, _variant_t(0L));
    EXPECT(IStatusDialogPtr(held) == status);
    held->Release();
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
