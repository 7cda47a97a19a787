#pragma once
// A recorder dialog on a card of three files, with a user.

#include <gtest/gtest.h>

#include <mutex>
#include <optional>

#include "com/text.h"
#include "com/variant.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {

inline constexpr wchar_t kRecorderCaption[] = L"Recorder";
inline constexpr wchar_t kReplaceCaption[] = L"Confirm file replace";
inline constexpr char kSection[] = "Software\\Kelvra\\Components\\Recorder";
inline constexpr DISPID kStatusText = 1, kProgress = 2, kFinished = 3, kConfirm = 4,
                        kFileStarted = 5;

// The parameter: whether recorder and collections are agile.
class RecorderTest : public testing::TestWithParam<bool> {
protected:
    RecorderTest() {
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
    ~RecorderTest() override { RemoveDirectoryW(folder_.c_str()); }

    static void remember(const char* name, const std::string& text) {
        RegSetKeyValueA(HKEY_CURRENT_USER, kSection, name, REG_SZ, text.c_str(),
                        static_cast<DWORD>(text.size() + 1));
    }

    // Shows the dialog to a user, who is to close it.
    void show(const std::function<void(DialogDriver&)>& steps, HRESULT expected = S_OK) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kRecorderCaption);
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
        driver.waitFor(kRecorderCaption);
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

inline std::string kindOf(const testing::TestParamInfo<bool>& kind) {
    return kind.param ? "Agile" : "Apartment";
}

}  // namespace kel::test
