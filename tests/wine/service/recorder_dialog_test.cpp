// The recorder dialog: what it shows of the card, and its worker under every disturbance.
#include <gtest/gtest.h>

#include <commctrl.h>

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <random>

#include "com/text.h"
#include "com/variant.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {
namespace {

constexpr wchar_t kCaption[] = L"Recorder";
constexpr wchar_t kReplaceCaption[] = L"Confirm file replace";
constexpr wchar_t kCancelDownload[] = L"Cancel Download ?";
constexpr char kSection[] = "Software\\Kelvra\\Components\\Recorder";
constexpr char kOpening[] = "BaudRate\nSetLinkRate 9600\nSetRate 57600\nReadListing\nCardSpace\n";
constexpr DISPID kStatusText = 1, kProgress = 2, kFinished = 3, kConfirm = 4, kFileStarted = 5;

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

// Ends the program where the dialog hangs: no driver could.
class Watchdog {
public:
    explicit Watchdog(int seconds)
        : thread_([this, seconds] {
              std::unique_lock lock(mutex_);
              if (over_.wait_for(lock, std::chrono::seconds(seconds), [this] { return isOver_; }))
                  return;
              std::fprintf(stderr, "the dialog hangs\n");
              std::fflush(stderr);
              TerminateProcess(GetCurrentProcess(), 3);
          }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        over_.notify_all();
        thread_.join();
    }

private:
    std::mutex mutex_;
    std::condition_variable over_;
    bool isOver_ = false;
    std::thread thread_;
};

// The parameter: whether recorder and collections are agile.
class RecorderDialogTest : public testing::TestWithParam<bool> {
protected:
    RecorderDialogTest() {
        const auto tell = [this](const std::string& call) {
            const std::lock_guard lock(mutex_);
            if (calls_++ == failing_) throw com::Error(E_ACCESSDENIED, L"the link fails");
            log_ += call + "\n";
        };
        link_.onCall = tell;
        recorder_->onCall = tell;
        recorder_->files = {
            {L"A.DAT", 1023, 37926.5}, {L"B.DAT", 1024, 2}, {L"C.DAT", 5LL << 30, 2.3}};
        recorder_->used = 3LL << 20;
        recorder_->capacity = 8LL << 30;
        link_.access = recorder_->controlling();
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        folder_ =
            std::wstring(temporary) + L"kel-recorder-" + std::to_wstring(GetCurrentProcessId());
        remember("DownloadFolder", com::narrow(folder_));
        dialog_->put_Communicator(link_.communicator());
    }
    ~RecorderDialogTest() override { RemoveDirectoryW(folder_.c_str()); }

    static void remember(const char* name, const std::string& text) {
        RegSetKeyValueA(HKEY_CURRENT_USER, kSection, name, REG_SZ, text.c_str(),
                        static_cast<DWORD>(text.size() + 1));
    }

    // Shows the dialog to a user, who is to close it.
    void show(const std::function<void(DialogDriver&)>& steps, HRESULT expected = S_OK) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kCaption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), expected);
        EXPECT_EQ(result, VARIANT_FALSE);
        EXPECT_EQ(GetLastActivePopup(GetDesktopWindow()), GetDesktopWindow());
    }
    static void close(DialogDriver& driver) { driver.press(IDCANCEL); }

    static void waitForText(DialogDriver& driver, int control, const std::wstring& text) {
        driver.waitUntil(com::narrow(L"for '" + text + L"'").c_str(),
                         [&] { return driver.text(control) == text; });
    }
    static void waitForEnd(DialogDriver& driver) {
        driver.waitFor(kCaption);
        waitForText(driver, IDC_RECORDER_DOWNLOAD, L"Download");
    }
    void download(DialogDriver& driver) {
        driver.press(IDC_RECORDER_DOWNLOAD);
        driver.waitUntil("the operation runs", [&] { return isInside_.load(); });
    }
    // Answers a message box or question, and comes back to the dialog.
    static void answer(DialogDriver& driver, const wchar_t* caption, int button) {
        const HWND box = driver.waitFor(caption);
        driver.press(button);
        driver.waitUntil("the box is gone", [&] { return !IsWindow(box); });
    }
    // An operation that lasts until it is aborted.
    void runUntilAborted() {
        recorder_->operation = [this] {
            isInside_ = true;
            while (recorder_->work()) {
            }
            isInside_ = false;
            return false;
        };
    }
    bool confirm(const char* name = "A.DAT") {
        return com::isTrue(
            recorder_->fire(kConfirm, {com::Variant(std::string_view(name))}).get().boolVal);
    }
    std::string takeLog() {
        const std::lock_guard lock(mutex_);
        return std::exchange(log_, {});
    }

    const RegistrySandbox settings_{HKEY_CURRENT_USER};
    std::mutex mutex_;
    std::string log_;
    int calls_ = 0;
    int failing_ = -1;
    std::atomic<bool> isInside_ = false;
    std::wstring folder_;
    FakeLink link_;
    com::ComPtr<FakeRecorder> recorder_ = com::makeObject<FakeRecorder>(GetParam());
    std::optional<ClassObject> collections_{std::in_place, link::kCollectionClass,
                                            [] { return makeCollection(GetParam()); }};
    com::ComPtr<IRecorderDialog> dialog_ = kelUtils().create<IRecorderDialog>(CLSID_RecorderDialog);
};

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

TEST_P(RecorderDialogTest, TellsWhyItCannotStart) {
    show([&](DialogDriver& driver) {
        takeLog();
        driver.setText(IDC_RECORDER_FOLDER, folder_ + L"\\none\\below");
        driver.press(IDC_RECORDER_DOWNLOAD);
        driver.waitFor(L"");
        EXPECT_EQ(driver.text(0xffff), L"Unable to create folder!");
        driver.press(IDOK);
        driver.waitFor(kCaption);
        driver.setText(IDC_RECORDER_FOLDER, folder_);
        if (GetParam()) {
            const ImportPatch patch(kelUtils().module(), "CreateThread",
                                    reinterpret_cast<void*>(noThread));
            driver.press(IDC_RECORDER_DOWNLOAD);
            driver.waitFor(L"FATAL ERROR");
            EXPECT_EQ(driver.text(0xffff), L"Unable to start thread");
            driver.press(IDOK);
            driver.waitFor(kCaption);
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
        driver.waitFor(kCaption);
        EXPECT_EQ(driver.text(IDC_RECORDER_FILES), L"Files: 3");
        EXPECT_EQ(takeLog(), "");
        runUntilAborted();
        driver.press(IDC_RECORDER_FORMAT);
        answer(driver, L"Format?", IDOK);
        driver.waitUntil("the card is formatted", [&] { return isInside_.load(); });
        driver.waitFor(kCaption);
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

TEST_P(RecorderDialogTest, WhatRunsIsCancelledOnlyByAYes) {
    runUntilAborted();
    show([&](DialogDriver& driver) {
        takeLog();
        download(driver);
        for (const int control : {IDC_RECORDER_DOWNLOAD, IDC_RECORDER_FORMAT, IDCANCEL}) {
            driver.waitFor(kCaption);
            driver.press(control);
            answer(driver, kCancelDownload, IDNO);
        }
        EXPECT_TRUE(isInside_);
        // A change of the rate waits for the end.
        const HWND window = driver.waitFor(kCaption);
        driver.send(driver.control(IDC_RECORDER_RATE), CB_SETCURSEL, 0);
        PostMessageW(window, WM_COMMAND, MAKEWPARAM(IDC_RECORDER_RATE, CBN_SELCHANGE), 0);
        answer(driver, kCancelDownload, IDYES);
        waitForEnd(driver);
        EXPECT_EQ(takeLog(), "Download to " + com::narrow(folder_) + "\\\nAbort\nSetRate 300\n");
        // So does the end of the dialog.
        download(driver);
        close(driver);
        answer(driver, kCancelDownload, IDYES);
    });
    EXPECT_FALSE(isInside_);
}

TEST_P(RecorderDialogTest, APendingQuestionIsAnsweredNoWhenTheDialogCloses) {
    std::string answers;
    recorder_->operation = [&] {
        while (!recorder_->isAborted)
            answers += confirm() ? 'y' : 'n';
        // What is asked now nobody sees any more.
        answers += confirm() ? 'y' : 'n';
        return false;
    };
    show([&](DialogDriver& driver) {
        const HWND window = driver.window();
        driver.press(IDC_RECORDER_DOWNLOAD);
        const HWND question = driver.waitFor(kReplaceCaption);
        PostMessageW(window, WM_CLOSE, 0, 0);
        driver.waitFor(kCancelDownload);
        // Only one box at a time takes input.
        EXPECT_FALSE(IsWindowEnabled(question));
        driver.press(IDYES);
    });
    EXPECT_EQ(answers, "nn");
}

// An agile recorder begins by itself.
class RecorderHereTest : public RecorderDialogTest {};

TEST_P(RecorderHereTest, WhatIsCancelledBeforeItBeginsNeverDoes) {
    collections_.reset();
    collections_.emplace(link::kCollectionClass, [] {
        PostMessageW(FindWindowW(nullptr, kCaption), WM_COMMAND, IDC_RECORDER_DOWNLOAD, 0);
        return makeCollection(false);
    });
    show([&](DialogDriver& driver) {
        takeLog();
        driver.press(IDC_RECORDER_DOWNLOAD);
        answer(driver, kCancelDownload, IDYES);
        waitForEnd(driver);
        close(driver);
    });
    EXPECT_EQ(takeLog(), "Abort\n");
}

TEST_P(RecorderDialogTest, AWindowThatGoesWithItsOwnerTakesTheWorkerAlong) {
    const HWND owner =
        CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    bool answered = true;
    recorder_->operation = [&] {
        isInside_ = true;
        answered = confirm();
        while (recorder_->work()) {
        }
        isInside_ = false;
        return false;
    };
    VARIANT_BOOL result = 7;
    DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(kCaption);
        driver.press(IDC_RECORDER_DOWNLOAD);
        driver.waitFor(kReplaceCaption);
        PostMessageW(owner, WM_CLOSE, 0, 0);
    });
    EXPECT_EQ(dialog_->ShowModal(static_cast<long>(reinterpret_cast<LONG_PTR>(owner)), &result),
              S_OK);
    EXPECT_FALSE(isInside_);
    EXPECT_FALSE(answered);
    EXPECT_FALSE(IsWindow(owner));
}

TEST_P(RecorderDialogTest, EveryCallMayFail) {
    const auto run = [&] {
        calls_ = 0;
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kCaption);
            driver.send(driver.control(IDC_RECORDER_SELECT_ALL), BM_CLICK);
            driver.send(driver.control(IDC_RECORDER_DOWNLOAD), BM_CLICK);
            waitForEnd(driver);
            driver.press(IDC_RECORDER_FORMAT);
            answer(driver, L"Format?", IDOK);
            driver.waitFor(kCaption);
            waitForText(driver, IDC_RECORDER_USED, L"0 kB");
            waitForEnd(driver);
            waitForText(driver, IDC_RECORDER_STATUS, failing_ < 0 ? L"" : L"the link fails");
            close(driver);
        });
        return dialog_->ShowModal(0, &result);
    };
    EXPECT_EQ(run(), S_OK);
    const int all = calls_;
    int returned = 0;
    for (failing_ = 0; failing_ < all; ++failing_) {
        SCOPED_TRACE(failing_);
        const HRESULT code = run();
        if (code == S_OK) continue;
        ++returned;
        EXPECT_EQ(code, E_ACCESSDENIED);
        EXPECT_EQ(takeError()->description, L"the link fails");
    }
    // Those of the opening; a download, a format and its space come later.
    EXPECT_EQ(returned, 8);
    EXPECT_EQ(all, 8 + 3);
}

// Where nothing is registered that passes it to the worker, it is read on the dialog's thread.
TEST_P(RecorderDialogTest, TheSelectionNeedNotBeAgile) {
    collections_.reset();
    collections_.emplace(link::kCollectionClass, [] { return makeCollection(false); });
    show([&](DialogDriver& driver) {
        driver.send(driver.control(IDC_RECORDER_SELECT_ALL), BM_CLICK);
        takeLog();
        driver.send(driver.control(IDC_RECORDER_DOWNLOAD), BM_CLICK);
        waitForEnd(driver);
        close(driver);
    });
    EXPECT_EQ(takeLog(), "Download to " + com::narrow(folder_) + "\\ A.DAT B.DAT C.DAT\n");
}

TEST_P(RecorderDialogTest, WithoutARecorderNothingIsShown) {
    link_.access = nullptr;
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), E_NOINTERFACE);
    EXPECT_EQ(result, VARIANT_FALSE);
}

TEST_P(RecorderDialogTest, CancelledAtAnyMomentItNeverHangs) {
    const char* wanted = std::getenv("KEL_RECORDER_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 20;
    const Watchdog watchdog(50 + rounds);
    recorder_->operation = [&] {
        for (int i = 0; recorder_->work(); ++i) {
            recorder_->fire(kProgress, {com::Variant(static_cast<long>(i)), com::Variant(100L)});
            if (i % 3 == 0) confirm();
        }
        return false;
    };
    std::mt19937 random(7);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        show([&](DialogDriver& driver) {
            const HWND window = driver.window();
            driver.press(IDC_RECORDER_DOWNLOAD);
            // Questions are answered, or not, until the moment comes.
            for (auto left = random() % 12; left > 0; --left) {
                const HWND question = FindWindowW(nullptr, kReplaceCaption);
                if (question && random() % 2 == 0) PostMessageW(question, WM_COMMAND, IDOK, 0);
                Sleep(random() % 4);
            }
            const WPARAM way = random() % 2 ? IDCANCEL : IDC_RECORDER_DOWNLOAD;
            PostMessageW(window, WM_COMMAND, way, 0);
            driver.waitUntil("the dialog is closed", [&] {
                const HWND asks = FindWindowW(nullptr, kCancelDownload);
                const HWND question = FindWindowW(nullptr, kReplaceCaption);
                if (asks) PostMessageW(asks, WM_COMMAND, IDYES, 0);
                // Asked over the other one, it has to be answered first.
                if (question && asks && IsWindowEnabled(question))
                    PostMessageW(question, WM_COMMAND, IDCANCEL, 0);
                if (!asks && IsWindow(window)) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
                return !IsWindow(window);
            });
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Apartment, RecorderHereTest, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Kinds, RecorderDialogTest, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Agile" : "Apartment"; });

}  // namespace
}  // namespace kel::test
