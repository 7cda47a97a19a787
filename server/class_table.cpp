#include "server/class_table.h"

#include <string>

#include "com/error.h"
#include "com/object.h"
#include "controls/multi_select_dialog.h"
#include "controls/status_dialog.h"
#include "dialogs/connect/connect_kelgate_dialog.h"
#include "dialogs/connect/connect_serial_dialog.h"
#include "dialogs/connect/new_session_dialog.h"
#include "dialogs/service/recorder_dialog.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "script/preprocessor.h"
#include "terminal/terminal.h"

namespace kel::server {
namespace {

// The creator of the classes that this version registers but does not implement.
HRESULT createUnbuilt(const com::ClassRow& row, IUnknown*, REFIID iid, void**) {
    return com::guard(iid, nullptr, [&]() -> HRESULT {
        const std::wstring name = std::wstring(L"KelUtils.") + row.name;
        return com::publish(E_NOTIMPL, name + L" is not implemented in this version", iid,
                            (name + L".1").c_str());
    });
}

template <class Component>
constexpr auto kCreate = com::rowCreator<com::createInstance<Component>>;

com::ClassRow table[] = {
    {L"KelTerminal", &CLSID_KelTerminal, IDR_KELTERMINAL, kCreate<terminal::KelTerminal>},
    {L"ConnectSerialDialog", &CLSID_ConnectSerialDialog, IDR_CONNECTSERIALDIALOG,
     kCreate<connect::ConnectSerialDialog>},
    {L"UploadFirmwareDialog", &CLSID_UploadFirmwareDialog, IDR_UPLOADFIRMWAREDIALOG, createUnbuilt},
    {L"Preprocessor", &CLSID_Preprocessor, IDR_PREPROCESSOR, kCreate<script::Preprocessor>},
    {L"RecorderDialog", &CLSID_RecorderDialog, IDR_RECORDERDIALOG,
     kCreate<service::RecorderDialog>},
    {L"CompassCalibDialog", &CLSID_CompassCalibDialog, IDR_COMPASSCALIBDIALOG, createUnbuilt},
    {L"HTMLWindow", &CLSID_HTMLWindow, IDR_HTMLWINDOW, createUnbuilt},
    {L"HTMLPageData", &CLSID_HTMLPageData, IDR_HTMLPAGEDATA, createUnbuilt},
    {L"KelScript", &CLSID_KelScript, IDR_KELSCRIPT, createUnbuilt},
    {L"KelObjects", &CLSID_KelObjects, IDR_KELOBJECTS, createUnbuilt},
    {L"ConnectKelGateDialog", &CLSID_ConnectKelGateDialog, IDR_CONNECTKELGATEDIALOG,
     kCreate<connect::ConnectKelGateDialog>},
    {L"NewSessionDialog", &CLSID_NewSessionDialog, IDR_NEWSESSIONDIALOG,
     kCreate<connect::NewSessionDialog>},
    {L"PressureOffsetDialog", &CLSID_PressureOffsetDialog, IDR_PRESSUREOFFSETDIALOG, createUnbuilt},
    {L"MultiSelectDialog", &CLSID_MultiSelectDialog, IDR_MULTISELECTDIALOG,
     kCreate<controls::MultiSelectDialog>},
    {L"PreprocessorExtender", &CLSID_PreprocessorExtender, IDR_PREPROCESSOREXTENDER, createUnbuilt},
    {L"StatusDialog", &CLSID_StatusDialog, IDR_STATUSDIALOG, kCreate<controls::StatusDialog>},
    {L"DataGrid", &CLSID_DataGrid, IDR_DATAGRID, createUnbuilt},
    {L"HTMLChildWindow", &CLSID_HTMLChildWindow, IDR_HTMLCHILDWINDOW, createUnbuilt},
};

}  // namespace

std::span<com::ClassRow> classTable() {
    return table;
}

}  // namespace kel::server
