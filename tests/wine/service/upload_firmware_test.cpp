// The firmware upload dialog: what it asks of the uploader, and what becomes of the link.
#include <gtest/gtest.h>

#include <cderr.h>
#include <commctrl.h>
#include <commdlg.h>
#include <dlgs.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "com/message_loop.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/wine/service/fake_uploader.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {
namespace {

constexpr wchar_t kUploadCaption[] = L"Update firmware - new.hex";
constexpr char kSaved[] = "EchoWindow\nIdleProcessing\nEchoWindow = 0\nIdleProcessing = -1\n";
constexpr char kRestored[] = "EchoWindow = 42\nIdleProcessing = 0\n";
constexpr char kWoken[] = "Link.FastConnection = 0\nLink.WakeUpInstrument\n";

ULONGLONG tickCount = 0;
ULONGLONG WINAPI tellTickCount() {
    return tickCount;
}

// Windows, unlike Wine, sends no Cancel in the name of a button that is disabled.
DLGPROC uploadProcedure = nullptr;
INT_PTR CALLBACK behaveAsWindows(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    if (message == WM_COMMAND && wide == IDCANCEL && longer != 0 &&
        !IsWindowEnabled(reinterpret_cast<HWND>(longer)))
        return TRUE;
    return uploadProcedure(window, message, wide, longer);
}

class UploadFirmwareTest : public testing::Test {
protected:
    UploadFirmwareTest() {
        link_.echoWindow = 42;
        link_.isIdleProcessing = false;
        link_.onCall = [this](const std::string& call) {
            if (call == "EchoWindow = 42") uploader_->askFormerSinks(1, L"Late");
        };
        dialog_->put_Communicator(link_.communicator());
        setFile(L"new.hex");
        std::filesystem::create_directories(folder_ / "alone.kfc");
        std::filesystem::current_path(folder_);
        for (const char* const name : {"new.hex", "new.kfc"})
            std::ofstream(name) << ":00000001FF\n";
    }
    ~UploadFirmwareTest() override {
        DestroyWindow(owner_);
        std::filesystem::current_path(folder_.parent_path());
        std::filesystem::remove_all(folder_);
    }

    void setFile(const std::wstring& path) { dialog_->put_FilePath(com::Bstr(path).get()); }
    bool show(const std::function<void(DialogDriver&)>& steps,
              const std::wstring& caption = kUploadCaption) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            window_ = driver.waitFor(caption);
            steps(driver);
        });
        IUploadFirmwareDialog* const dialog = dialog_.Get();
        EXPECT_EQ(dialog->ShowModal(HandleToLong(owner_), &result), S_OK);
        return result == VARIANT_TRUE;
    }
    static void start(DialogDriver& driver) { driver.press(IDOK); }
    static void escape(DialogDriver& driver) { driver.key(VK_ESCAPE); }
    static void waitForStatus(DialogDriver& driver, const wchar_t* text) {
        driver.waitUntil("the status line",
                         [&] { return driver.text(IDC_FIRMWARE_STATUS) == text; });
    }
    // What the window shows in the middle of a call.
    std::wstring status() const {
        wchar_t text[200] = L"";
        GetDlgItemTextW(window_, IDC_FIRMWARE_STATUS, text, 200);
        return text;
    }
    LRESULT bar() const { return SendDlgItemMessageW(window_, IDC_FIRMWARE_BAR, PBM_GETPOS, 0, 0); }

    bool isRemembered(const std::string& file) const {
        return joined(sandbox_.listing()).find("LastUsedFile = \"" + file) != std::string::npos;
    }

    const HWND owner_ = CreateWindowW(L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 99, 99, nullptr,
                                      nullptr, nullptr, nullptr);
    HWND window_ = nullptr;
    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                          ("kel-firmware." + std::to_string(GetCurrentProcessId()));
    RegistrySandbox sandbox_{HKEY_CURRENT_USER};
    const ImportPatch clock_{kelUtils().module(), "GetTickCount64",
                             reinterpret_cast<void*>(tellTickCount)};
    FakeLink link_;
    com::ComPtr<FakeUploader> uploader_ = com::makeObject<FakeUploader>();
    std::optional<ClassObject> class_{std::in_place, link::kFirmwareUploaderClass, [this] {
                                          return link_.around<IUnknown>(uploader_->controlling());
                                      }};
    com::ComPtr<IUploadFirmwareDialog> dialog_ =
        kelUtils().create<IUploadFirmwareDialog>(CLSID_UploadFirmwareDialog);
};

TEST_F(UploadFirmwareTest, LoadsAsTheUserWants) {
    const struct {
        std::wstring file;
        std::vector<int> clicks;
        const wchar_t* code;
        const char* calls;
        bool isPlain = false;
    } rows[] = {
        {L"new.hex",
         {},
         L"",
         "0\nCompanionFile = \"new.kfc\"\nAdvise\nUpload \"new.hex\" 0 57600 0\n"
         "Verify \"new.hex\" 0\nUnadvise\n"},
        {L"new.hex", {IDC_FIRMWARE_VERIFY}, L"-12", "0\nUpload \"new.hex\" 0 57600 -12\n", true},
        {L"a/b.KfH",
         {IDC_FIRMWARE_HEXADECIMAL, IDC_FIRMWARE_FAST},
         L"",
         "-1\nAdvise\nUpload \"a/b.KfH\" -1 9600 0\nVerify \"a/b.KfH\" -1\nUnadvise\n"},
        {L"alone.hex",
         {IDC_FIRMWARE_VERIFY},
         L"",
         "0\nAdvise\nUpload \"alone.hex\" 0 57600 0\nUnadvise\n"},
    };
    std::wstring code;
    for (const auto& row : rows) {
        uploader_->isPlain = row.isPlain;
        link_.answers["Link.WakeUpInstrument"] = {false};
        setFile(row.file);
        EXPECT_TRUE(show(
            [&](DialogDriver& driver) {
                // Of all that was chosen before, only the code is remembered.
                EXPECT_EQ(driver.text(IDC_FIRMWARE_ACCESS_CODE), code);
                code = row.code;
                for (const int button : row.clicks)
                    driver.send(driver.control(button), BM_CLICK);
                driver.setText(IDC_FIRMWARE_ACCESS_CODE, row.code);
                start(driver);
            },
            L"Update firmware - " + row.file.substr(row.file.find(L'/') + 1)));
        EXPECT_EQ(link_.takeWork(), std::string(kSaved) + "Attach \"link1\"\nPackageFile = " +
                                        row.calls + kRestored + kWoken);
    }
    EXPECT_FALSE(isRemembered(""));
}

TEST_F(UploadFirmwareTest, RefusesACodeThatIsNoNumber) {
    EXPECT_FALSE(show([](DialogDriver& driver) {
        driver.setText(IDC_FIRMWARE_ACCESS_CODE, L"12a");
        start(driver);
        waitForStatus(driver, L"The access code must be a whole number");
        escape(driver);
    }));
    EXPECT_EQ(link_.takeWork(), "");
}

TEST_F(UploadFirmwareTest, AFailureLeavesOnlyTheWayOut) {
    const auto close = [](DialogDriver& driver) {
        PostMessageW(driver.window(), WM_SYSCOMMAND, SC_CLOSE, 0);
    };
    const struct {
        bool isUploaded;
        const wchar_t* said;
        const wchar_t* status;
        std::function<void(DialogDriver&)> leave;
    } rows[] = {
        {false, L"", L"The firmware was not loaded", close},
        {false, L"Wrong code", L"The firmware was not loaded: Wrong code", escape},
        {true, L"", L"The firmware is loaded, but could not be verified", escape},
        {true, L"Block 3 differs",
         L"The firmware is loaded, but could not be verified: Block 3 differs", close},
    };
    for (const auto& row : rows) {
        const auto fail = [&] {
            uploader_->say(row.said);
            return false;
        };
        uploader_->onUpload = [&] { return row.isUploaded || fail(); };
        uploader_->onVerify = fail;
        EXPECT_FALSE(show([&](DialogDriver& driver) {
            uploadProcedure = reinterpret_cast<DLGPROC>(SetWindowLongPtrW(
                driver.window(), DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(behaveAsWindows)));
            start(driver);
            waitForStatus(driver, row.status);
            driver.send(driver.window(), WM_NULL);
            for (const int control :
                 {IDC_FIRMWARE_ACCESS_CODE, IDC_FIRMWARE_BINARY, IDC_FIRMWARE_HEXADECIMAL,
                  IDC_FIRMWARE_VERIFY, IDC_FIRMWARE_FAST, IDOK, IDCANCEL})
                EXPECT_FALSE(IsWindowEnabled(driver.control(control))) << control;
            row.leave(driver);
            driver.waitUntil("it is closed", [&] { return !IsWindow(driver.window()); });
        }));
        EXPECT_TRUE(link_.takeWork().ends_with(kRestored));
        EXPECT_FALSE(uploader_->isHeard());
    }
}

TEST_F(UploadFirmwareTest, ShowsTheTransferAndEndsWithIt) {
    tickCount = 50000;
    uploader_->onUpload = [&] {
        EXPECT_EQ(status(), L"Loading the firmware");
        uploader_->progress(250, 1000);
        tickCount += 2000;
        uploader_->progress(500, 1000);
        EXPECT_EQ(bar(), 500);
        const std::pair<UINT, WPARAM> wishes[] = {
            {WM_CLOSE, 0}, {WM_COMMAND, IDCANCEL}, {WM_KEYDOWN, VK_ESCAPE}};
        for (const auto& [message, wide] : wishes) {
            uploader_->say(L"Block 2");
            EXPECT_EQ(status(), L"Block 2, 0:04 remaining");
            PostMessageW(window_, message, wide, 0);
            com::runWaitingMessages();
            EXPECT_EQ(status(), L"The transfer cannot be interrupted, 0:04 remaining");
        }
        PostMessageW(window_, WM_COMMAND, IDOK, 0);
        com::runWaitingMessages();
        return true;
    };
    uploader_->onVerify = [&] {
        EXPECT_EQ(status(), L"Verifying the firmware");
        EXPECT_EQ(bar(), 0);
        DestroyWindow(owner_);
        dialog_.Reset();
        uploader_->progress(1, 2);
        return true;
    };
    EXPECT_TRUE(show(start));
    EXPECT_EQ(link_.takeWork(),
              std::string(kSaved) +
                  "Attach \"link1\"\nPackageFile = 0\nCompanionFile = \"new.kfc\"\nAdvise\n"
                  "Upload \"new.hex\" 0 57600 0\nVerify \"new.hex\" 0\nUnadvise\n" +
                  kRestored + kWoken);
}

TEST_F(UploadFirmwareTest, WithoutAnUploaderNothingIsLoaded) {
    class_.reset();
    class_.emplace(link::kFirmwareUploaderClass, nullptr);
    EXPECT_FALSE(show([](DialogDriver& driver) {
        start(driver);
        driver.waitFor(L"Error");
        EXPECT_EQ(driver.text(0xFFFF), L"Unable to create Uploader object!");
        driver.press(IDOK);
        driver.waitFor(kUploadCaption);
        escape(driver);
    }));
    EXPECT_EQ(link_.takeWork(), std::string(kSaved) + kRestored);
    link_.hasPort = false;
    EXPECT_FALSE(show([](DialogDriver& driver) {
        start(driver);
        waitForStatus(driver, L"The link has no port");
        escape(driver);
    }));
}

// The platform's chooser where names with a bar are impossible.
std::wstring offers;
decltype(GetOpenFileNameW)* chooseAnyName = nullptr;
BOOL WINAPI chooseName(OPENFILENAMEW* question) {
    offers += std::wstring(question->lpstrFile) + L";" + question->lpstrDefExt + L";";
    for (const wchar_t* part = question->lpstrFilter; *part != L'\0'; part += wcslen(part) + 1)
        offers.append(part).append(L";");
    return !wcschr(question->lpstrFile, L'|') && chooseAnyName(question);
}
DWORD WINAPI tellRefusal() {
    return FNERR_INVALIDFILENAME;
}

TEST_F(UploadFirmwareTest, AsksForAFileWhereItHasNone) {
    setFile(L"");
    EXPECT_FALSE(show([](DialogDriver& driver) { driver.press(IDCANCEL); }, L"Open"));
    EXPECT_FALSE(isRemembered(""));
    const ImportPatch chooser(kelUtils().module(), "GetOpenFileNameW",
                              reinterpret_cast<void*>(chooseName));
    const ImportPatch error(kelUtils().module(), "CommDlgExtendedError",
                            reinterpret_cast<void*>(tellRefusal));
    chooseAnyName = chooser.original<decltype(GetOpenFileNameW)>();
    RegSetKeyValueA(HKEY_CURRENT_USER, "Software\\Kelvra\\Components\\UploadFirmwareDialog",
                    "LastUsedFile", REG_SZ, "C:\\old|.hex", 12);
    EXPECT_FALSE(show(
        [&](DialogDriver& driver) {
            driver.setText(cmb13, (folder_ / "new.hex").wstring());
            EXPECT_TRUE(isRemembered("C:\\old|.hex"));
            driver.press(IDOK);
            driver.waitFor(kUploadCaption);
            driver.press(IDCANCEL);
        },
        L"Open"));
    const std::wstring kinds =
        L";hex;Firmware Hex Files (.hex);*.hex;Kelvra firmware files (.kfh);*.kfh;";
    EXPECT_EQ(offers, L"C:\\old|.hex" + kinds + kinds);
    com::Bstr chosen;
    dialog_->get_FilePath(chosen.put());
    EXPECT_EQ(chosen.view(), (folder_ / "new.hex").wstring());
    EXPECT_TRUE(isRemembered((folder_ / "new.hex").string()));
    EXPECT_EQ(link_.takeWork(), "");
}

}  // namespace
}  // namespace kel::test
