#include "server/class_table.h"

#include <string>

#include "com/error.h"
#include "com/object.h"
#include "controls/multi_select_dialog.h"
#include "controls/status_dialog.h"
#include "dialogs/connect/connect_kelgate_dialog.h"
#include "dialogs/connect/connect_serial_dialog.h"
#include "dialogs/connect/new_session_dialog.h"
#include "dialogs/service/compass_calib_dialog.h"
#include "dialogs/service/pressure_offset_dialog.h"
#include "dialogs/service/recorder_dialog.h"
#include "dialogs/service/upload_firmware_dialog.h"
#include "html/kel_objects.h"
#include "html/kel_script.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "script/preprocessor.h"
#include "script/preprocessor_extender.h"
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
    {L"UploadFirmwareDialog", &CLSID_UploadFirmwareDialog, IDR_UPLOADFIRMWAREDIALOG,
     kCreate<service::UploadFirmwareDialog>},
    {L"Preprocessor", &CLSID_Preprocessor, IDR_PREPROCESSOR, kCreate<script::Preprocessor>},
    {L"RecorderDialog", &CLSID_RecorderDialog, IDR_RECORDERDIALOG,
     kCreate<service::RecorderDialog>},
    {L"CompassCalibDialog", &CLSID_CompassCalibDialog, IDR_COMPASSCALIBDIALOG,
     kCreate<service::CompassCalibDialog>},
    {L"HTMLWindow", &CLSID_HTMLWindow, IDR_HTMLWINDOW, createUnbuilt},
    {L"HTMLPageData", &CLSID_HTMLPageData, IDR_HTMLPAGEDATA, createUnbuilt},
    {L"KelScript", &CLSID_KelScript, IDR_KELSCRIPT, kCreate<html::KelScript>},
    {L"KelObjects", &CLSID_KelObjects, IDR_KELOBJECTS, kCreate<html::KelObjects>},
    {L"ConnectKelGateDialog", &CLSID_ConnectKelGateDialog, IDR_CONNECTKELGATEDIALOG,
     kCreate<connect::ConnectKelGateDialog>},
    {L"NewSessionDialog", &CLSID_NewSessionDialog, IDR_NEWSESSIONDIALOG,
     kCreate<connect::NewSessionDialog>},
    {L"PressureOffsetDialog", &CLSID_PressureOffsetDialog, IDR_PRESSUREOFFSETDIALOG,
     kCreate<service::PressureOffsetDialog>},
    {L"MultiSelectDialog", &CLSID_MultiSelectDialog, IDR_MULTISELECTDIALOG,
     kCreate<controls::MultiSelectDialog>},
    {L"PreprocessorExtender", &CLSID_PreprocessorExtender, IDR_PREPROCESSOREXTENDER,
     kCreate<script::PreprocessorExtender>},
    {L"StatusDialog", &CLSID_StatusDialog, IDR_STATUSDIALOG, kCreate<controls::StatusDialog>},
    {L"DataGrid", &CLSID_DataGrid, IDR_DATAGRID, createUnbuilt},
    {L"HTMLChildWindow", &CLSID_HTMLChildWindow, IDR_HTMLCHILDWINDOW, createUnbuilt},
};

}  // namespace

std::span<com::ClassRow> classTable() {
    return table;
}

}  // namespace kel::server
