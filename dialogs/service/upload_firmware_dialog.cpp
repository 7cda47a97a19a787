#include "dialogs/service/upload_firmware_dialog.h"

#include "com/text.h"
#include "com/variant.h"
#include "dialogs/service/upload_window.h"
#include "settings/settings_key.h"
#include "settings/vocabulary.h"
#include "ui/file_chooser.h"

namespace kel::service {
namespace {

constexpr wchar_t kFirmwareFilter[] =
    L"Firmware Hex Files (.hex)\0*.hex\0Kelvra firmware files (.kfh)\0*.kfh\0";

// Nothing when the user cancels.
std::optional<std::wstring> chooseFirmware(HWND owner) {
    namespace store = settings::firmware;
    const auto last =
        com::widen(settings::ReadStringSetting(store::kKey, store::kLastUsedFile, {}));
    const auto path = ui::chooseFile(
        owner, std::wstring(kFirmwareFilter, std::size(kFirmwareFilter) - 1), L"hex", last);
    if (path) {
        settings::WriteStringSetting(settings::SettingsKey::forWriting(store::kKey),
                                     store::kLastUsedFile, com::narrow(*path));
    }
    return path;
}

}  // namespace

HRESULT UploadFirmwareDialog::get_FilePath(BSTR* path) {
    return guarded<IUploadFirmwareDialog>([&] {
        com::out(path) = nullptr;
        *path = com::Bstr(filePath_).release();
    });
}

HRESULT UploadFirmwareDialog::put_FilePath(BSTR path) {
    return guarded<IUploadFirmwareDialog>([&] { filePath_ = com::view(path); });
}

bool UploadFirmwareDialog::show(HWND owner, const com::ComPtr<IKelCommunicator>& link) {
    if (filePath_.empty()) {
        const auto chosen = chooseFirmware(owner);
        if (!chosen) return false;
        filePath_ = *chosen;
    }
    if (!UploadWindow(*this, link, filePath_, accessCode_).load(owner)) return false;
    com::check(link->put_FastConnection(VARIANT_FALSE), link);
    // The new firmware has been loaded, whether it answers by now or not.
    VARIANT_BOOL isAwake = VARIANT_FALSE;
    com::check(link->WakeUpInstrument(&isAwake), link);
    return true;
}

}  // namespace kel::service
