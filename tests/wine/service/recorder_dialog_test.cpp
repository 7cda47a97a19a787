// The recorder dialog: what it shows of the card, and what it does with it.
#include <commctrl.h>
#include <shlobj.h>

#include "tests/wine/service/recorder_fixture.h"
#include "tests/wine/support/import_patch.h"

namespace kel::test {
namespace {

constexpr char kOpening[] = "BaudRate\nSetLinkRate 9600\nSetRate 57600\nReadListing\nCardSpace\n";

class RecorderDialogTest : public RecorderTest {};

std::wstring cell(DialogDriver& driver, int row, int column) {
    wchar_t text[64] = L"";
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = static_cast<int>(std::size(text));
    driver.send(driver.control(IDC_RECORDER_LIST), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                reinterpret_cast<LPARAM>(&item));
    return text;
}

HANDLE WINAPI noThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE, LPVOID, DWORD,
                       LPDWORD) {
    return nullptr;
}

TEST_P(RecorderDialogTest, TellsHowFarASlowListingIs) {
    std::wstring shown;
    recorder_->onCall = [&](const std::string& call) {
        const HWND window = FindWindowW(nullptr, kRecorderCaption);
        wchar_t text[80] = L"";
        GetDlgItemTextW(window, IDC_RECORDER_STATUS, text, static_cast<int>(std::size(text)));
        if (call == "SelectFile C.DAT") {
            shown = text;
        } else if (call.starts_with("SelectFile")) {
            Sleep(1100);
        }
    };
    show([](DialogDriver& driver) {
        waitForText(driver, IDC_RECORDER_STATE, L"Ready");
        EXPECT_EQ(driver.text(IDC_RECORDER_STATUS), L"");
        close(driver);
    });
    EXPECT_EQ(shown, L"2 of 3 files listed, 00:00:01 remaining");
}

TEST_P(RecorderDialogTest, ShowsTheCard) {
    show([&](DialogDriver& driver) {
        std::wstring table;
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                table += cell(driver, row, column) + (column < 3 ? L"|" : L"\n");
        EXPECT_EQ(table,
                  L"A.DAT|1023 b|11/01/2003|12:00\n"
                  L"B.DAT| 1.0 kB|01/01/1900|00:00\n"
                  L"C.DAT|5.00 GB|01/01/1900|07:12\n");
        EXPECT_EQ(driver.text(IDC_RECORDER_USED), L"3.00 MB");
        EXPECT_EQ(driver.text(IDC_RECORDER_FREE), L"8.00 GB");
        EXPECT_EQ(driver.text(IDC_RECORDER_FILES), L"Files: 3");
        EXPECT_EQ(driver.text(IDC_RECORDER_STATE), L"Ready");
        EXPECT_EQ(driver.text(IDC_RECORDER_RATE), L"57600");
        EXPECT_EQ(driver.text(IDC_RECORDER_FOLDER), folder_);
        EXPECT_EQ(driver.text(IDC_RECORDER_DOWNLOAD), L"&Download");
        std::wstring columns;
        for (WPARAM i = 0; i < 4; ++i) {
            wchar_t text[16] = L"";
            LVCOLUMNW column{};
            column.mask = LVCF_TEXT | LVCF_FMT | LVCF_WIDTH;
            column.pszText = text;
            column.cchTextMax = static_cast<int>(std::size(text));
            driver.send(driver.control(IDC_RECORDER_LIST), LVM_GETCOLUMNW, i,
                        reinterpret_cast<LPARAM>(&column));
            columns += text + (L" " + std::to_wstring(column.fmt & LVCFMT_JUSTIFYMASK)) + L" " +
                       std::to_wstring(column.cx) + L",";
        }
        EXPECT_EQ(columns, L"Name 0 78,Size 1 80,Date 2 85,Time 2 68,");
        // Enter in a field with no default button is no way out.
        driver.send(driver.window(), WM_COMMAND, IDOK);
        EXPECT_EQ(driver.text(IDC_RECORDER_STATE), L"Ready");
        close(driver);
    });
    EXPECT_EQ(takeLog(),
              std::string(kOpening) + "SelectFile A.DAT\nSelectFile B.DAT\nSelectFile C.DAT\n");
}

// One that paints itself after each of so many rows takes longer than any driver waits.
TEST_P(RecorderDialogTest, ShowsTenThousandFiles) {
    recorder_->files.resize(10000);
    show([&](DialogDriver& driver) {
        const HWND list = driver.control(IDC_RECORDER_LIST);
        EXPECT_EQ(driver.send(list, LVM_GETITEMCOUNT), 10000);
        driver.send(driver.control(IDC_RECORDER_SELECT_ALL), BM_CLICK);
        EXPECT_EQ(driver.send(list, LVM_GETSELECTEDCOUNT), 10000);
        close(driver);
    });
}

TEST_P(RecorderDialogTest, RemembersRateAndFolder) {
    recorder_->files.clear();
    remember("DownoadRate", "2400");
    show([&](DialogDriver& driver) {
        EXPECT_EQ(driver.text(IDC_RECORDER_RATE), L"2400");
        EXPECT_EQ(driver.text(IDC_RECORDER_FILES), L"Files: 0");
        const HWND rates = driver.control(IDC_RECORDER_RATE);
        driver.send(rates, CB_SETCURSEL, 9);
        driver.send(driver.window(), WM_COMMAND, MAKEWPARAM(IDC_RECORDER_RATE, CBN_SELCHANGE),
                    reinterpret_cast<LPARAM>(rates));
        driver.setText(IDC_RECORDER_FOLDER, L"C:\\North");
        close(driver);
    });
    EXPECT_EQ(takeLog(),
              "BaudRate\nSetLinkRate 9600\nSetRate 2400\nReadListing\nCardSpace\nSetRate 115200\n");
    const auto stored = [&] { return joined(settings_.listing()); };
    EXPECT_NE(stored().find("DownoadRate = \"115200\""), std::string::npos) << stored();
    EXPECT_NE(stored().find("DownloadFolder = \"C:\\North\""), std::string::npos) << stored();
    // A rate that is not offered selects none, and nothing is written then.
    remember("DownoadRate", "1234");
    show([&](DialogDriver& driver) {
        driver.setText(IDC_RECORDER_FOLDER, L"C:\\South");
        close(driver);
    });
    EXPECT_EQ(takeLog(), "BaudRate\nSetLinkRate 9600\nReadListing\nCardSpace\n");
    EXPECT_EQ(stored().find("South"), std::string::npos);
}

TEST_P(RecorderDialogTest, LeavingItAbortsTheListing) {
    recorder_->onCall = [&](const std::string& call) {
        log_ += call + "\n";
        if (call != "ReadListing") return;
        SendMessageW(FindWindowW(nullptr, kRecorderCaption), WM_COMMAND, IDCANCEL, 0);
        throw com::Error(E_ABORT);
    };
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(takeLog(), "BaudRate\nSetLinkRate 9600\nSetRate 57600\nReadListing\nAbort\n");
}

TEST_P(RecorderDialogTest, DownloadsWhatIsSelected) {
    DWORD thread = 0;
    std::atomic<int> stage = 0;
    recorder_->operation = [&] {
        thread = GetCurrentThreadId();
        recorder_->fire(kStatusText, {com::Variant(L"Reading A.DAT")});
        recorder_->fire(kProgress, {com::Variant(250L), com::Variant(1000L)});
        recorder_->fire(kFileStarted, {com::Variant(L"A.DAT")});
        while (stage < 1)
            recorder_->work();
        recorder_->fire(kFinished);
        return true;
    };
    show([&](DialogDriver& driver) {
        LVITEMW item{};
        item.state = item.stateMask = LVIS_SELECTED;
        for (const WPARAM row : {2, 0})
            driver.send(driver.control(IDC_RECORDER_LIST), LVM_SETITEMSTATE, row,
                        reinterpret_cast<LPARAM>(&item));
        takeLog();
        driver.press(IDC_RECORDER_DOWNLOAD);
        waitForText(driver, IDC_RECORDER_STATUS, L"Reading A.DAT");
        waitForText(driver, IDC_RECORDER_TIME, L"Remaining time : 00:00:00");
        EXPECT_EQ(driver.send(driver.control(IDC_RECORDER_BAR), PBM_GETRANGE), 1000);
        EXPECT_EQ(driver.send(driver.control(IDC_RECORDER_BAR), PBM_GETPOS), 250);
        EXPECT_EQ(driver.text(IDC_RECORDER_DOWNLOAD), L"Cancel");
        stage = 1;
        waitForText(driver, IDC_RECORDER_DOWNLOAD, L"Download");
        EXPECT_EQ(driver.text(IDC_RECORDER_TIME).substr(0, 9), L"Done : 00");
        close(driver);
    });
    EXPECT_EQ(takeLog(), "Download to " + com::narrow(folder_) + "\\ A.DAT C.DAT\n");
    EXPECT_EQ(thread != GetCurrentThreadId(), GetParam());
    EXPECT_NE(GetFileAttributesW(folder_.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_P(RecorderDialogTest, AsksBeforeItReplaces) {
    std::string answers;
    recorder_->operation = [&] {
        for (int i = 0; i < 5; ++i)
            answers += confirm() ? 'y' : 'n';
        answers += ' ';
        return true;
    };
    show([&](DialogDriver& driver) {
        // The next download asks again.
        for (const std::vector<int>& buttons :
             {{IDC_REPLACE_ALL}, std::vector{IDOK, IDCANCEL, IDOK, IDCANCEL, IDCANCEL}}) {
            driver.press(IDC_RECORDER_DOWNLOAD);
            driver.waitFor(kReplaceCaption);
            EXPECT_EQ(driver.text(IDC_REPLACE_QUESTION),
                      L"File 'A.DAT' already exists!\nDo you want to replace it?");
            for (const int button : buttons)
                answer(driver, kReplaceCaption, button);
            waitForEnd(driver);
        }
        close(driver);
    });
    EXPECT_EQ(answers, "yyyyy ynynn ");
}

TEST_P(RecorderDialogTest, TheFolderIsChosenAmongThoseThatAreThere) {
    show([&](DialogDriver& driver) {
        for (const int answer : {IDCANCEL, IDOK}) {
            driver.press(IDC_RECORDER_BROWSE);
            const HWND chooser = driver.waitFor(L"Browse for Folder");
            EXPECT_TRUE(FindWindowExW(chooser, nullptr, L"Static", L"Select the Export Directory"));
            driver.send(chooser, BFFM_SETSELECTIONW, TRUE,
                        reinterpret_cast<LPARAM>(L"C:\\windows"));
            driver.press(answer);
            driver.waitFor(kRecorderCaption);
            EXPECT_EQ(driver.text(IDC_RECORDER_FOLDER),
                      answer == IDOK ? L"C:\\windows" : folder_.c_str());
        }
        close(driver);
    });
}

TEST_P(RecorderDialogTest, TellsWhyItCannotStart) {
    show([&](DialogDriver& driver) {
        takeLog();
        driver.setText(IDC_RECORDER_FOLDER, folder_ + L"\\none\\below");
        driver.press(IDC_RECORDER_DOWNLOAD);
        driver.waitFor(L"");
        EXPECT_EQ(driver.text(0xffff), L"Unable to create folder!");
        driver.press(IDOK);
        driver.waitFor(kRecorderCaption);
        driver.setText(IDC_RECORDER_FOLDER, folder_);
        if (GetParam()) {
            const ImportPatch patch(kelUtils().module(), "CreateThread",
                                    reinterpret_cast<void*>(noThread));
            driver.press(IDC_RECORDER_DOWNLOAD);
            driver.waitFor(L"FATAL ERROR");
            EXPECT_EQ(driver.text(0xffff), L"Unable to start thread");
            driver.press(IDOK);
            driver.waitFor(kRecorderCaption);
            EXPECT_EQ(driver.text(IDC_RECORDER_DOWNLOAD), L"&Download");
        }
        close(driver);
    });
    EXPECT_EQ(takeLog(), "");
}

TEST_P(RecorderDialogTest, FormatsWhenTheUserIsSure) {
    show([&](DialogDriver& driver) {
        takeLog();
        driver.press(IDC_RECORDER_FORMAT);
        answer(driver, L"Format?", IDCANCEL);
        driver.waitFor(kRecorderCaption);
        EXPECT_EQ(driver.text(IDC_RECORDER_FILES), L"Files: 3");
        EXPECT_EQ(takeLog(), "");
        runUntilAborted();
        driver.press(IDC_RECORDER_FORMAT);
        answer(driver, L"Format?", IDOK);
        driver.waitUntil("the card is formatted", [&] { return isInside_.load(); });
        driver.waitFor(kRecorderCaption);
        waitForText(driver, IDC_RECORDER_FREE, L"8.00 GB");
        EXPECT_EQ(driver.text(IDC_RECORDER_FILES), L"Files: none");
        EXPECT_EQ(driver.text(IDC_RECORDER_USED), L"0 kB");
        EXPECT_EQ(driver.text(IDC_RECORDER_DOWNLOAD), L"Cancel");
        EXPECT_EQ(driver.send(driver.control(IDC_RECORDER_LIST), LVM_GETITEMCOUNT), 0);
        driver.press(IDC_RECORDER_DOWNLOAD);
        driver.waitFor(L"Cancel Format ?");
        EXPECT_EQ(driver.text(0xffff),
                  L"Format in progress\nAre you sure that you want to cancel it?");
        driver.press(IDYES);
        waitForEnd(driver);
        close(driver);
    });
    EXPECT_NE(takeLog().find("Format\n"), std::string::npos);
}

TEST_P(RecorderDialogTest, WithoutARecorderNothingIsShown) {
    link_.access = nullptr;
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), E_NOINTERFACE);
    EXPECT_EQ(result, VARIANT_FALSE);
}

INSTANTIATE_TEST_SUITE_P(Kinds, RecorderDialogTest, testing::Bool(), kindOf);

}  // namespace
}  // namespace kel::test
