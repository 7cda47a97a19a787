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
constexpr char kStored[] = "Software\\Kelvra\\Components\\UploadFirmwareDialog";
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
            if (calls_++ == failing_) throw com::Error(E_ACCESSDENIED, L"the link fails");
            if (call == "EchoWindow = 42") uploader_->sayToFormerSinks(L"Late");
        };
        dialog_->put_Communicator(link_.communicator());
        setFile(L"new.hex");
    }
    ~UploadFirmwareTest() override { std::filesystem::remove_all(folder_); }

    void setFile(const std::wstring& path) { dialog_->put_FilePath(com::Bstr(path).get()); }
    std::wstring makeFile(const wchar_t* name) {
        std::filesystem::create_directory(folder_);
        std::ofstream(folder_ / name) << ":00000001FF\n";
        return (folder_ / name).wstring();
    }
    bool show(const std::function<void(DialogDriver&)>& steps,
              const std::wstring& caption = kUploadCaption, HRESULT expected = S_OK) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            window_ = driver.waitFor(caption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), expected);
        return result == VARIANT_TRUE;
    }
    static void start(DialogDriver& driver) { driver.press(IDOK); }
    static void cancel(DialogDriver& driver) { driver.press(IDCANCEL); }
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

    std::string takeLog() {
        std::string log;
        for (const std::string& call : std::exchange(link_.calls, {}))
            log += call + "\n";
        return log;
    }
    static void remember(const std::string& file) {
        RegSetKeyValueA(HKEY_CURRENT_USER, kStored, "LastUsedFile", REG_SZ, file.c_str(),
                        static_cast<DWORD>(file.size() + 1));
    }
    static std::string remembered() {
        char file[500] = "";
        DWORD size = sizeof file;
        RegGetValueA(HKEY_CURRENT_USER, kStored, "LastUsedFile", RRF_RT_REG_SZ, nullptr, file,
                     &size);
        return file;
    }

    int calls_ = 0;
    int failing_ = -1;
    HWND window_ = nullptr;
    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                          ("kel-firmware." + std::to_string(GetCurrentProcessId()));
    RegistrySandbox sandbox_{HKEY_CURRENT_USER};
    const ImportPatch clock_{kelUtils().module(), "GetTickCount64",
                             reinterpret_cast<void*>(tellTickCount)};
    FakeLink link_;
    com::ComPtr<FakeUploader> uploader_ = com::makeObject<FakeUploader>(link_);
    std::optional<ClassObject> class_{std::in_place, link::kFirmwareUploaderClass,
                                      uploader_->controlling()};
    com::ComPtr<IUploadFirmwareDialog> dialog_ =
        kelUtils().create<IUploadFirmwareDialog>(CLSID_UploadFirmwareDialog);
};

TEST_F(UploadFirmwareTest, LoadsAsTheUserWants) {
    const std::wstring pair = makeFile(L"two.hex");
    const std::string path = com::narrow(pair);
    const std::string companion = com::narrow(makeFile(L"two.kfc"));
    std::filesystem::create_directory(folder_ / "one.kfc");
    const std::string folder = folder_.string();
    const struct {
        std::wstring file;
        std::vector<int> clicks;
        const wchar_t* code;
        std::string calls;
        bool knowsCompanions = true;
    } rows[] = {
        {L"fw/new.hex",
         {},
         L"",
         "PackageFile = 0\nAdvise\nUpload fw/new.hex 0 57600 0\nVerify fw/new.hex 0\n"},
        {L"a\\b.KfH",
         {IDC_FIRMWARE_HEXADECIMAL, IDC_FIRMWARE_FAST},
         L"-12",
         "PackageFile = -1\nAdvise\nUpload a\\b.KfH -1 9600 -12\nVerify a\\b.KfH -1\n"},
        {pair,
         {IDC_FIRMWARE_VERIFY},
         L"",
         "PackageFile = 0\nCompanionFile = " + companion + "\nAdvise\nUpload " + path +
             " 0 57600 0\n"},
        {pair,
         {IDC_FIRMWARE_VERIFY},
         L"",
         "PackageFile = 0\nAdvise\nUpload " + path + " 0 57600 0\n",
         false},
        {com::widen(folder) + L"/one.hex",
         {IDC_FIRMWARE_VERIFY},
         L"0",
         "PackageFile = 0\nAdvise\nUpload " + folder + "/one.hex 0 57600 0\n"},
    };
    for (const auto& row : rows) {
        uploader_->knowsCompanions = row.knowsCompanions;
        link_.answers["Link.WakeUpInstrument"] = {false};
        setFile(row.file);
        EXPECT_TRUE(show(
            [&](DialogDriver& driver) {
                for (const int button : row.clicks)
                    driver.send(driver.control(button), BM_CLICK);
                driver.setText(IDC_FIRMWARE_ACCESS_CODE, row.code);
                start(driver);
            },
            L"Update firmware - " + row.file.substr(row.file.find_last_of(L"\\/") + 1)));
        EXPECT_EQ(takeLog(), std::string(kSaved) + "Attach\n" + row.calls + kRestored + kWoken);
    }
    EXPECT_EQ(remembered(), "");
}

TEST_F(UploadFirmwareTest, RemembersTheAccessCodeOnly) {
    EXPECT_FALSE(show([](DialogDriver& driver) {
        EXPECT_EQ(driver.text(IDC_FIRMWARE_ACCESS_CODE), L"");
        driver.setText(IDC_FIRMWARE_ACCESS_CODE, L"12a");
        start(driver);
        waitForStatus(driver, L"The access code must be a whole number");
        cancel(driver);
    }));
    EXPECT_TRUE(show([](DialogDriver& driver) {
        driver.setText(IDC_FIRMWARE_ACCESS_CODE, L" -7 ");
        driver.send(driver.control(IDC_FIRMWARE_HEXADECIMAL), BM_CLICK);
        start(driver);
    }));
    EXPECT_FALSE(show([](DialogDriver& driver) {
        EXPECT_EQ(driver.text(IDC_FIRMWARE_ACCESS_CODE), L"-7");
        EXPECT_EQ(driver.send(driver.control(IDC_FIRMWARE_BINARY), BM_GETCHECK), BST_CHECKED);
        escape(driver);
    }));
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
        {false, nullptr, L"The firmware was not loaded", close},
        {false, L"Wrong code", L"Wrong code", escape},
        {true, nullptr, L"The firmware is loaded, but differs from the file", escape},
        {true, L"Block 3 differs", L"Block 3 differs", close},
    };
    for (const auto& row : rows) {
        uploader_->onUpload = [&] {
            uploader_->say(!row.isUploaded && row.said ? row.said : L"");
            return row.isUploaded;
        };
        uploader_->onVerify = [&] {
            if (row.said) uploader_->say(row.said);
            return false;
        };
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
        }));
        EXPECT_TRUE(takeLog().ends_with(kRestored));
        EXPECT_FALSE(uploader_->isHeard());
    }
}

TEST_F(UploadFirmwareTest, ShowsTheTransferAndDoesNotEndInTheMiddle) {
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
        setFile(L"other.hex");
        dialog_->put_Communicator(nullptr);
        return true;
    };
    uploader_->onVerify = [&] {
        EXPECT_EQ(status(), L"Verifying the firmware");
        EXPECT_EQ(bar(), 0);
        return true;
    };
    EXPECT_TRUE(show(start));
    EXPECT_EQ(takeLog(), std::string(kSaved) +
                             "Attach\nPackageFile = 0\nAdvise\nUpload new.hex 0 57600 0\n"
                             "Verify new.hex 0\n" +
                             kRestored + kWoken);
}

TEST_F(UploadFirmwareTest, OutlivesItsOwnerAndItsHost) {
    const HWND owner = CreateWindowW(L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 99, 99, nullptr,
                                     nullptr, nullptr, nullptr);
    IUploadFirmwareDialog* dialog = dialog_.Get();
    uploader_->onUpload = [&] {
        DestroyWindow(owner);
        dialog_.Reset();
        uploader_->progress(1, 2);
        return true;
    };
    VARIANT_BOOL result = 7;
    DialogDriver user([](DialogDriver& driver) {
        driver.waitFor(kUploadCaption);
        start(driver);
    });
    EXPECT_EQ(dialog->ShowModal(HandleToLong(owner), &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
    EXPECT_TRUE(takeLog().ends_with(kWoken));
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
    EXPECT_EQ(takeLog(), std::string(kSaved) + kRestored);
    link_.hasPort = false;
    EXPECT_FALSE(show([](DialogDriver& driver) {
        start(driver);
        waitForStatus(driver, L"The link has no port");
        escape(driver);
    }));
}

TEST_F(UploadFirmwareTest, EveryCallOfTheLinkMayFail) {
    setFile(makeFile(L"new.hex"));
    makeFile(L"new.kfc");
    EXPECT_TRUE(show(start));
    const std::vector<std::string> all = std::exchange(link_.calls, {});
    ASSERT_EQ(all.size(), 14u);
    for (const std::string& failing : all) {
        SCOPED_TRACE(failing);
        failing_ = static_cast<int>(&failing - all.data());
        calls_ = 0;
        link_.echoWindow = 42;
        link_.isIdleProcessing = false;
        const bool isRestoring = std::string(kRestored).find(failing + "\n") != std::string::npos;
        const bool isAfter = failing.starts_with("Link.");
        const bool result = show(
            [&](DialogDriver& driver) {
                start(driver);
                if (isRestoring || isAfter) return;
                waitForStatus(driver, L"the link fails");
                PostMessageW(driver.window(), WM_CLOSE, 0, 0);
            },
            kUploadCaption, isAfter ? E_ACCESSDENIED : S_OK);
        EXPECT_EQ(result, isRestoring);
        EXPECT_FALSE(uploader_->isHeard());
        EXPECT_EQ(link_.echoWindow, failing == "EchoWindow = 42" ? 0 : 42);
        EXPECT_EQ(link_.isIdleProcessing, failing == "IdleProcessing = 0");
    }
}

TEST_F(UploadFirmwareTest, AsksForAFileWhereItHasNone) {
    const std::wstring path = makeFile(L"new.hex");
    remember(com::narrow(makeFile(L"old.hex")));
    setFile(L"");
    EXPECT_FALSE(show(cancel, L"Open"));
    EXPECT_NE(remembered(), com::narrow(path));
    EXPECT_FALSE(show(
        [&](DialogDriver& driver) {
            EXPECT_EQ(driver.text(cmb13), L"old.hex");
            driver.setText(cmb13, path);
            driver.press(IDOK);
            driver.waitFor(kUploadCaption);
            cancel(driver);
        },
        L"Open"));
    EXPECT_EQ(remembered(), com::narrow(path));
    com::Bstr chosen;
    dialog_->get_FilePath(chosen.put());
    EXPECT_EQ(chosen.view(), path);
    EXPECT_EQ(takeLog(), "");
}

// A chooser that takes no name, and is cancelled without one.
std::wstring offers;
BOOL WINAPI refuseNames(OPENFILENAMEW* question) {
    offers = std::wstring(question->lpstrFile) + L";" + question->lpstrDefExt;
    for (const wchar_t* part = question->lpstrFilter; *part != L'\0'; part += wcslen(part) + 1)
        offers.append(L";").append(part);
    return FALSE;
}
DWORD WINAPI tellRefusal() {
    return offers.front() == L';' ? 0 : FNERR_INVALIDFILENAME;
}

TEST_F(UploadFirmwareTest, AsksWithoutANameThatIsImpossible) {
    const ImportPatch chooser(kelUtils().module(), "GetOpenFileNameW",
                              reinterpret_cast<void*>(refuseNames));
    const ImportPatch error(kelUtils().module(), "CommDlgExtendedError",
                            reinterpret_cast<void*>(tellRefusal));
    remember("C:\\new|.hex");
    setFile(L"");
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(offers, L";hex;Firmware Hex Files (.hex);*.hex;Kelvra firmware files (.kfh);*.kfh");
}

}  // namespace
}  // namespace kel::test
