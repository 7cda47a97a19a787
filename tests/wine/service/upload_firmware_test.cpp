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
constexpr int kOptions[] = {IDC_FIRMWARE_ACCESS_CODE,
                            IDC_FIRMWARE_BINARY,
                            IDC_FIRMWARE_HEXADECIMAL,
                            IDC_FIRMWARE_VERIFY,
                            IDC_FIRMWARE_FAST,
                            IDOK,
                            IDCANCEL};

ULONGLONG tickCount = 0;
ULONGLONG WINAPI tellTickCount() {
    return tickCount;
}

class UploadFirmwareTest : public testing::Test {
protected:
    UploadFirmwareTest() {
        link_.echoWindow = 42;
        link_.isIdleProcessing = false;
        link_.onCall = [this](const std::string& call) {
            if (calls_++ == failing_) throw com::Error(E_ACCESSDENIED, L"the link fails");
            if (call.starts_with("Upload")) {
                EXPECT_TRUE(uploader_->isHeard());
            }
            if (call == "EchoWindow = 42") {
                EXPECT_FALSE(uploader_->isHeard());
                uploader_->sayLate(L"Late");
            }
        };
        dialog_->put_Communicator(link_.communicator());
        setFile(L"fw/new.hex");
    }
    ~UploadFirmwareTest() override { std::filesystem::remove_all(folder_); }

    void setFile(const std::wstring& path) { dialog_->put_FilePath(com::Bstr(path).get()); }
    std::wstring makeFile(const wchar_t* name) {
        std::filesystem::create_directory(folder_);
        const auto path = folder_ / name;
        std::ofstream(path) << ":00000001FF\n";
        return path.wstring();
    }

    bool show(const std::function<void(DialogDriver&)>& steps, const wchar_t* caption,
              HRESULT expected = S_OK, HWND owner = nullptr) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            window_ = driver.waitFor(caption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(HandleToLong(owner), &result), expected);
        return result == VARIANT_TRUE;
    }
    bool show(const std::function<void(DialogDriver&)>& steps) {
        return show(steps, kUploadCaption);
    }
    static void start(DialogDriver& driver) { driver.press(IDOK); }
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
    static void remember(const std::string& lastUsedFile) {
        RegSetKeyValueA(HKEY_CURRENT_USER, kStored, "LastUsedFile", REG_SZ, lastUsedFile.c_str(),
                        static_cast<DWORD>(lastUsedFile.size() + 1));
    }
    static std::string lastUsedFile() {
        char path[500] = "";
        DWORD size = sizeof path;
        RegGetValueA(HKEY_CURRENT_USER, kStored, "LastUsedFile", RRF_RT_REG_SZ, nullptr, path,
                     &size);
        return path;
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

constexpr char kSaved[] =
    "EchoWindow\nIdleProcessing\nEchoWindow = 0\nIdleProcessing = -1\nAttach\n";
constexpr char kRestored[] = "EchoWindow = 42\nIdleProcessing = 0\n";
constexpr char kLoaded[] =
    "EchoWindow = 42\nIdleProcessing = 0\nLink.FastConnection = 0\nLink.WakeUpInstrument\n";

TEST_F(UploadFirmwareTest, LoadsAsTheUserWants) {
    const std::wstring pair = makeFile(L"two.hex");
    const std::string companion = com::narrow(makeFile(L"two.kfc"));
    const std::string path = com::narrow(pair);
    const struct {
        std::wstring file;
        std::vector<int> clicks;
        const wchar_t* code;
        std::string calls;
    } rows[] = {
        {L"fw/new.hex",
         {},
         L"",
         "PackageFile = 0\nAdvise\nUpload fw/new.hex 0 57600 0\n"
         "Verify fw/new.hex 0\n"},
        {L"a\\b.KfH",
         {IDC_FIRMWARE_HEXADECIMAL, IDC_FIRMWARE_FAST},
         L"-12",
         "PackageFile = -1\nAdvise\nUpload a\\b.KfH -1 9600 -12\nVerify a\\b.KfH -1\n"},
        {pair,
         {IDC_FIRMWARE_VERIFY},
         L"2147483647",
         "PackageFile = 0\nCompanionFile = " + companion + "\nAdvise\nUpload " + path +
             " 0 57600 2147483647\n"},
        // A folder is no companion, and whose uploader knows of none does without.
        {folder_.wstring() + L"/one.hex",
         {IDC_FIRMWARE_VERIFY},
         L"0",
         "PackageFile = 0\nAdvise\nUpload " + folder_.string() + "/one.hex 0 57600 0\n"},
        {pair,
         {IDC_FIRMWARE_VERIFY},
         L"",
         "PackageFile = 0\nAdvise\nUpload " + path + " 0 57600 0\n"},
    };
    std::filesystem::create_directory(folder_ / "one.kfc");
    for (const auto& row : rows) {
        SCOPED_TRACE(com::narrow(row.file));
        uploader_->knowsCompanions = &row != std::end(rows) - 1;
        link_.answers["Link.WakeUpInstrument"] = {false};
        setFile(row.file);
        const std::wstring name = row.file.substr(row.file.find_last_of(L"\\/") + 1);
        EXPECT_TRUE(show(
            [&](DialogDriver& driver) {
                for (const int button : row.clicks)
                    driver.send(driver.control(button), BM_CLICK);
                driver.setText(IDC_FIRMWARE_ACCESS_CODE, row.code);
                start(driver);
            },
            (L"Update firmware - " + name).c_str()));
        EXPECT_EQ(takeLog(), kSaved + row.calls + kLoaded);
    }
    EXPECT_EQ(lastUsedFile(), "");
}

TEST_F(UploadFirmwareTest, RemembersTheAccessCodeOnly) {
    const auto look = [](DialogDriver& driver, const wchar_t* code) {
        EXPECT_EQ(driver.text(IDC_FIRMWARE_ACCESS_CODE), code);
        for (const int button : kOptions)
            EXPECT_TRUE(IsWindowEnabled(driver.control(button))) << button;
        for (const int button : {IDC_FIRMWARE_BINARY, IDC_FIRMWARE_VERIFY, IDC_FIRMWARE_FAST})
            EXPECT_EQ(driver.send(driver.control(button), BM_GETCHECK), BST_CHECKED) << button;
        EXPECT_EQ(driver.text(IDC_FIRMWARE_STATUS), L"Click 'Start' to update the firmware");
    };
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        look(driver, L"");
        driver.setText(IDC_FIRMWARE_ACCESS_CODE, L"12a");
        start(driver);
        waitForStatus(driver, L"The access code must be a whole number");
        driver.press(IDCANCEL);
    }));
    EXPECT_EQ(takeLog(), "");
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        look(driver, L"");
        driver.setText(IDC_FIRMWARE_ACCESS_CODE, L" -7 ");
        driver.send(driver.control(IDC_FIRMWARE_HEXADECIMAL), BM_CLICK);
        driver.send(driver.control(IDC_FIRMWARE_FAST), BM_CLICK);
        start(driver);
    }));
    show([&](DialogDriver& driver) {
        look(driver, L"-7");
        driver.key(VK_ESCAPE);
    });
}

TEST_F(UploadFirmwareTest, AFailureLeavesOnlyTheWayOut) {
    const auto closeBox = [](DialogDriver& driver) {
        PostMessageW(driver.window(), WM_SYSCOMMAND, SC_CLOSE, 0);
    };
    const auto escape = [](DialogDriver& driver) { driver.key(VK_ESCAPE); };
    const struct {
        std::vector<std::wstring> said;
        bool isUploaded;
        const wchar_t* status;
        std::function<void(DialogDriver&)> close;
    } rows[] = {
        {{}, false, L"The firmware was not loaded", closeBox},
        {{L"Wrong code"}, false, L"Wrong code", escape},
        {{}, true, L"The firmware is loaded, but differs from the file", escape},
        {{L"Wrong code", L"Block 3 differs"}, true, L"Block 3 differs", closeBox},
    };
    for (const auto& row : rows) {
        const auto answer = [&](std::size_t step, bool result) {
            if (step < row.said.size()) uploader_->say(row.said[step]);
            return result;
        };
        uploader_->onUpload = [&] { return answer(0, row.isUploaded); };
        uploader_->onVerify = [&] { return answer(1, false); };
        EXPECT_FALSE(show([&](DialogDriver& driver) {
            start(driver);
            waitForStatus(driver, row.status);
            driver.send(driver.window(), WM_NULL);
            for (const int control : kOptions)
                EXPECT_FALSE(IsWindowEnabled(driver.control(control))) << control;
            EXPECT_EQ(driver.focus(), driver.window());
            row.close(driver);
        }));
        const std::string log = takeLog();
        EXPECT_TRUE(log.ends_with(kRestored)) << log;
    }
}

TEST_F(UploadFirmwareTest, ShowsTheTransferAndDoesNotEndInTheMiddle) {
    tickCount = 50000;
    uploader_->onUpload = [&] {
        EXPECT_EQ(status(), L"Loading the firmware");
        uploader_->say(L"Block 1");
        EXPECT_EQ(status(), L"Block 1");
        uploader_->progress(250, 1000);
        EXPECT_EQ(bar(), 250);
        tickCount += 2000;
        uploader_->progress(500, 1000);
        EXPECT_EQ(status(), L"Block 1, 0:04 remaining");
        EXPECT_EQ(bar(), 500);
        const std::pair<UINT, WPARAM> wishes[] = {
            {WM_CLOSE, 0}, {WM_COMMAND, IDCANCEL}, {WM_KEYDOWN, VK_ESCAPE}};
        for (const auto& [message, wide] : wishes) {
            uploader_->say(L"Block 2");
            PostMessageW(window_, message, wide, 0);
            com::runWaitingMessages();
            EXPECT_EQ(status(), L"The transfer cannot be interrupted, 0:04 remaining");
        }
        PostMessageW(window_, WM_COMMAND, IDOK, 0);
        com::runWaitingMessages();
        VARIANT_BOOL result = 7;
        EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
        EXPECT_EQ(result, VARIANT_FALSE);
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
                             "PackageFile = 0\nAdvise\nUpload fw/new.hex 0 57600 0\n"
                             "Verify fw/new.hex 0\n" +
                             kLoaded);
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
    DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(kUploadCaption);
        start(driver);
    });
    EXPECT_EQ(dialog->ShowModal(HandleToLong(owner), &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
    EXPECT_TRUE(takeLog().ends_with(kLoaded));
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
        EXPECT_EQ(driver.text(IDC_FIRMWARE_STATUS), L"Unable to create Uploader object!");
        driver.key(VK_ESCAPE);
    }));
    EXPECT_EQ(takeLog(),
              "EchoWindow\nIdleProcessing\nEchoWindow = 0\nIdleProcessing = -1\n"
              "EchoWindow = 42\nIdleProcessing = 0\n");
    link_.hasPort = false;
    EXPECT_FALSE(show([](DialogDriver& driver) {
        start(driver);
        waitForStatus(driver, L"The link has no port");
        driver.key(VK_ESCAPE);
    }));
    dialog_->put_Communicator(nullptr);
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), E_INVALIDARG);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(dialog_->ShowModal(0, nullptr), E_POINTER);
}

TEST_F(UploadFirmwareTest, EveryCallOfTheLinkMayFail) {
    setFile(makeFile(L"new.hex"));
    makeFile(L"new.kfc");
    EXPECT_TRUE(show(start));
    const std::vector<std::string> all = std::exchange(link_.calls, {});
    ASSERT_EQ(all.size(), 14u);
    for (failing_ = 0; failing_ < 14; ++failing_) {
        const std::string& failing = all[static_cast<std::size_t>(failing_)];
        SCOPED_TRACE(failing);
        calls_ = 0;
        link_.echoWindow = 42;
        link_.isIdleProcessing = false;
        const bool isRestoring = failing == "EchoWindow = 42" || failing == "IdleProcessing = 0";
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
        if (isAfter) {
            EXPECT_EQ(takeError()->description, L"the link fails");
        }
        EXPECT_FALSE(uploader_->isHeard());
        if (failing != "EchoWindow = 42") {
            EXPECT_EQ(link_.echoWindow, 42);
        }
        if (failing != "IdleProcessing = 0") {
            EXPECT_FALSE(link_.isIdleProcessing);
        }
    }
}

TEST_F(UploadFirmwareTest, AsksForAFileWhereItHasNone) {
    const std::wstring path = makeFile(L"new.hex");
    const auto choose = [&](const std::string& remembered, const std::wstring& offered) {
        SCOPED_TRACE(remembered);
        remember(remembered);
        setFile(L"");
        EXPECT_FALSE(show([](DialogDriver& driver) { driver.press(IDCANCEL); }, L"Open"));
        EXPECT_EQ(lastUsedFile(), remembered);
        EXPECT_FALSE(show(
            [&](DialogDriver& driver) {
                EXPECT_EQ(driver.text(cmb13), offered);
                driver.setText(cmb13, path);
                driver.press(IDOK);
                driver.waitFor(kUploadCaption);
                driver.press(IDCANCEL);
            },
            L"Open"));
        EXPECT_EQ(lastUsedFile(), com::narrow(path));
        com::Bstr chosen;
        dialog_->get_FilePath(chosen.put());
        EXPECT_EQ(chosen.view(), path);
    };
    choose("", L"");
    choose(com::narrow(path), L"new.hex");
    EXPECT_EQ(takeLog(), "");
}

// A chooser that takes no name, and is cancelled without one.
std::vector<std::wstring> offeredNames;
std::wstring offeredKinds;
BOOL WINAPI refuseNames(OPENFILENAMEW* question) {
    offeredNames.emplace_back(question->lpstrFile);
    offeredKinds = question->lpstrDefExt;
    for (const wchar_t* part = question->lpstrFilter; *part != L'\0'; part += wcslen(part) + 1)
        offeredKinds.append(L";").append(part);
    return FALSE;
}
DWORD WINAPI tellRefusal() {
    return offeredNames.back().empty() ? 0 : FNERR_INVALIDFILENAME;
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
    EXPECT_EQ(offeredNames, (std::vector<std::wstring>{L"C:\\new|.hex", L""}));
    EXPECT_EQ(offeredKinds,
              L"hex;Firmware Hex Files (.hex);*.hex;Kelvra firmware files (.kfh);*.kfh");
}

}  // namespace
}  // namespace kel::test
