// The recorder dialog's worker under every disturbance.
#include <cstdlib>
#include <random>

#include "tests/wine/service/recorder_fixture.h"
#include "tests/wine/support/import_patch.h"

namespace kel::test {
namespace {

constexpr wchar_t kCancelDownload[] = L"Cancel Download ?";

class RecorderWorkerTest : public RecorderTest {};

TEST_P(RecorderWorkerTest, WhatRunsIsCancelledOnlyByAYes) {
    runUntilAborted();
    show([&](DialogDriver& driver) {
        takeLog();
        download(driver);
        for (const int control : {IDC_RECORDER_DOWNLOAD, IDC_RECORDER_FORMAT, IDCANCEL}) {
            driver.waitFor(kRecorderCaption);
            driver.press(control);
            answer(driver, kCancelDownload, IDNO);
        }
        EXPECT_TRUE(isInside_);
        // A change of the rate waits for the end.
        const HWND window = driver.waitFor(kRecorderCaption);
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

HRESULT WINAPI refuseToWait(DWORD, DWORD, ULONG, HANDLE*, DWORD*) {
    return E_UNEXPECTED;
}

TEST_P(RecorderWorkerTest, APendingQuestionIsAnsweredNoWhenTheDialogCloses) {
    // Also where COM does not wait for the worker.
    const ImportPatch wait(kelUtils().module(), "CoWaitForMultipleHandles",
                           reinterpret_cast<void*>(refuseToWait));
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
class RecorderHereTest : public RecorderTest {};

TEST_P(RecorderHereTest, WhatIsCancelledBeforeItBeginsNeverDoes) {
    collections_.reset();
    collections_.emplace(link::kCollectionClass, [] {
        PostMessageW(FindWindowW(nullptr, kRecorderCaption), WM_COMMAND, IDC_RECORDER_DOWNLOAD, 0);
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

TEST_P(RecorderWorkerTest, AWindowThatGoesWithItsOwnerTakesTheWorkerAlong) {
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
        driver.waitFor(kRecorderCaption);
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

TEST_P(RecorderWorkerTest, EveryCallMayFail) {
    const auto run = [&] {
        calls_ = 0;
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kRecorderCaption);
            driver.send(driver.control(IDC_RECORDER_SELECT_ALL), BM_CLICK);
            driver.send(driver.control(IDC_RECORDER_DOWNLOAD), BM_CLICK);
            waitForEnd(driver);
            driver.press(IDC_RECORDER_FORMAT);
            answer(driver, L"Format?", IDOK);
            driver.waitFor(kRecorderCaption);
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
TEST_P(RecorderWorkerTest, TheSelectionNeedNotBeAgile) {
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

TEST_P(RecorderWorkerTest, CancelledAtAnyMomentItNeverHangs) {
    const char* wanted = std::getenv("KEL_RECORDER_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 20;
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
INSTANTIATE_TEST_SUITE_P(Kinds, RecorderWorkerTest, testing::Bool(), kindOf);

}  // namespace
}  // namespace kel::test
