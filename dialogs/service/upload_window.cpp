#include "dialogs/service/upload_window.h"

#include <commctrl.h>

#include "com/creation.h"
#include "com/port.h"
#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"
#include "dialogs/service/instrument.h"
#include "dialogs/service/model/firmware_file.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "ui/link_settings.h"

namespace kel::service {
namespace {

constexpr long kFastRate = 57600;
constexpr long kUsualRate = 9600;
constexpr wchar_t kNoUploader[] = L"Unable to create Uploader object!";

constexpr int kUploadControls[] = {IDC_FIRMWARE_ACCESS_CODE,
                                   IDC_FIRMWARE_BINARY,
                                   IDC_FIRMWARE_HEXADECIMAL,
                                   IDC_FIRMWARE_VERIFY,
                                   IDC_FIRMWARE_FAST,
                                   IDOK,
                                   IDCANCEL};

bool isFile(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Uploaders that know of one file only get that.
void passCompanion(const com::ComPtr<IFirmwareUploader>& uploader, const std::wstring& file) {
    const std::wstring companion = firmwareCompanion(file);
    com::ComPtr<IFirmwareUploader2> both;
    if (companion.empty() || !isFile(companion) || FAILED(uploader.As(&both))) return;
    com::check(both->put_CompanionFile(com::Bstr(companion).get()), both);
}

}  // namespace

bool UploadWindow::load(HWND owner) {
    runModal(IDD_UPLOAD_FIRMWARE, owner);
    return isLoaded_;
}

int UploadWindow::statusLine() const {
    return IDC_FIRMWARE_STATUS;
}

void UploadWindow::initialise() {
    const std::wstring caption = L"Update firmware - " + std::wstring(firmwareName(file_));
    SetWindowTextW(window(), caption.c_str());
    if (accessCode_ != 0) setText(IDC_FIRMWARE_ACCESS_CODE, std::to_wstring(accessCode_));
    CheckRadioButton(window(), IDC_FIRMWARE_BINARY, IDC_FIRMWARE_HEXADECIMAL, IDC_FIRMWARE_BINARY);
    CheckDlgButton(window(), IDC_FIRMWARE_VERIFY, BST_CHECKED);
    CheckDlgButton(window(), IDC_FIRMWARE_FAST, BST_CHECKED);
    SendMessageW(control(IDC_FIRMWARE_BAR), PBM_SETRANGE32, 0, TransferProgress::kWhole);
}

bool UploadWindow::command(int control, int notification) {
    if (control == IDOK) {
        start();
        return true;
    }
    if (control == IDCANCEL) {
        leave();
        return true;
    }
    return Dialog::command(control, notification);
}

std::optional<LRESULT> UploadWindow::handle(UINT message, WPARAM wide, LPARAM) {
    // By default a dialog is not closed while its Cancel button is disabled.
    if (message == WM_CLOSE) {
        leave();
        return 0;
    }
    // Where no control takes the keyboard, the window itself does: for Escape.
    if (!wasStarted_) return std::nullopt;
    switch (message) {
        case WM_SETFOCUS:
            return 0;
        case WM_GETDLGCODE:
            return DLGC_WANTALLKEYS;
        case WM_KEYDOWN:
            if (wide == VK_ESCAPE) leave();
            return 0;
        default:
            return std::nullopt;
    }
}

bool UploadWindow::isChecked(int control) const {
    return IsDlgButtonChecked(window(), control) == BST_CHECKED;
}

void UploadWindow::start() {
    if (wasStarted_) return;
    const auto code = parseAccessCode(text(IDC_FIRMWARE_ACCESS_CODE));
    if (!code) {
        showStatus(L"The access code must be a whole number");
        SetFocus(control(IDC_FIRMWARE_ACCESS_CODE));
        return;
    }
    const Choices choices{.accessCode = *code,
                          .isHexadecimal = isChecked(IDC_FIRMWARE_HEXADECIMAL),
                          .verifies = isChecked(IDC_FIRMWARE_VERIFY),
                          .isFast = isChecked(IDC_FIRMWARE_FAST)};
    accessCode_ = choices.accessCode;
    wasStarted_ = true;
    disableAll();
    {
        const com::Scoped running(isRunning_, true);
        // Also when the window has gone meanwhile.
        isLoaded_ = transfer(choices);
    }
    if (isLoaded_) end(IDOK);
}

void UploadWindow::leave() {
    if (!isRunning_) {
        end(IDCANCEL);
        return;
    }
    progress_.refuse(L"The transfer cannot be interrupted");
    showProgress();
}

void UploadWindow::disableAll() {
    SetFocus(window());
    for (const int each : kUploadControls)
        enable(each, false);
}

bool UploadWindow::transfer(const Choices& choices) {
    const auto port = com::presentPortOf(link_);
    const ui::LinkSettings before(port);
    com::check(port->put_EchoWindow(0), port);
    com::check(port->put_IdleProcessing(VARIANT_TRUE), port);

    const auto uploader = com::createStarted<IFirmwareUploader>(link::kFirmwareUploaderClass);
    if (!uploader) {
        showStatus(kNoUploader);
        tellError(window(), kNoUploader);
        return false;
    }
    com::check(uploader->Attach(link_.Get()), uploader);
    com::check(uploader->put_PackageFile(com::variantBool(isFirmwarePackage(file_))), uploader);
    passCompanion(uploader, file_);
    const UploaderEvents events(uploader, *this);

    const com::Bstr file(file_);
    const VARIANT_BOOL isHexadecimal = com::variantBool(choices.isHexadecimal);
    const long rate = choices.isFast ? kFastRate : kUsualRate;
    const bool isUploaded =
        carryOut(L"Loading the firmware", L"The firmware was not loaded", [&](VARIANT_BOOL* done) {
            com::check(uploader->Upload(file.get(), isHexadecimal, rate, choices.accessCode, done),
                       uploader);
        });
    if (!isUploaded || !choices.verifies) return isUploaded;
    return carryOut(L"Verifying the firmware", L"The firmware is loaded, but could not be verified",
                    [&](VARIANT_BOOL* done) {
                        com::check(uploader->Verify(file.get(), isHexadecimal, done), uploader);
                    });
}

template <class Call>
bool UploadWindow::carryOut(const wchar_t* text, const wchar_t* failure, Call&& call) {
    progress_.begin(text);
    showProgress();
    VARIANT_BOOL isDone = VARIANT_FALSE;
    call(&isDone);
    if (com::isTrue(isDone)) return true;
    showStatus(progress_.lastLine(failure));
    return false;
}

void UploadWindow::uploaderSays(std::wstring text) {
    progress_.tell(std::move(text));
    showProgress();
}

void UploadWindow::uploaderProgresses(long done, long total) {
    progress_.advance(done, total,
                      TransferProgress::Time(static_cast<std::int64_t>(GetTickCount64())));
    showProgress();
}

void UploadWindow::showProgress() {
    if (!window()) return;
    showStatus(progress_.line());
    const HWND bar = control(IDC_FIRMWARE_BAR);
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(progress_.position()), 0);
    UpdateWindow(bar);
}

}  // namespace kel::service
