// The recorder dialog where no scene tells what a user does.
#include <shlobj.h>

#include <cstdlib>
#include <random>

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
namespace {

constexpr wchar_t kCaption[] = L"Recorder";
constexpr char kFolder[] = "C:\\windows\\temp";

// The parameter: whether recorder and collections are agile.
class RecorderDialogTest : public testing::TestWithParam<bool> {
protected:
    RecorderDialogTest() {
        remember("Recorder", "DownloadFolder", kFolder);
        link_.access = link_.around<IUnknown>(recorder_->controlling());
        dialog_->put_Communicator(link_.communicator());
    }

    // Shows the dialog to a user, who is to close it.
    void show(const std::function<void(DialogDriver&)>& steps) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kCaption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
        EXPECT_EQ(result, VARIANT_FALSE);
    }

    const RegistrySandbox settings_{HKEY_CURRENT_USER};
    FakeLink link_;
    const com::ComPtr<FakeRecorder> recorder_ = com::makeObject<FakeRecorder>(GetParam());
    const ClassObject collections_{link::kCollectionClass,
                                   [] { return makeCollection(GetParam()); }};
    const com::ComPtr<IRecorderDialog> dialog_ =
        kelUtils().create<IRecorderDialog>(CLSID_RecorderDialog);
};

TEST_P(RecorderDialogTest, TheFolderIsChosenAmongThoseThatAreThere) {
    show([&](DialogDriver& driver) {
        for (const int answer : {IDCANCEL, IDOK}) {
            driver.press(IDC_RECORDER_BROWSE);
            const HWND chooser = driver.waitFor(L"Browse for Folder");
            EXPECT_TRUE(FindWindowExW(chooser, nullptr, L"Static", L"Select the Export Directory"));
            driver.send(chooser, BFFM_SETSELECTIONW, TRUE,
                        reinterpret_cast<LPARAM>(L"C:\\windows"));
            driver.press(answer);
            driver.waitFor(kCaption);
            EXPECT_EQ(driver.text(IDC_RECORDER_FOLDER),
                      answer == IDOK ? L"C:\\windows" : com::widen(kFolder));
        }
        driver.press(IDCANCEL);
    });
}

TEST_P(RecorderDialogTest, CancelledAtAnyMomentItNeverHangs) {
    const char* wanted = std::getenv("KEL_RECORDER_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 20;
    recorder_->operation = [&] {
        for (long i = 0; recorder_->work(); ++i) {
            recorder_->fire(2, {com::Variant(i), com::Variant(100L)});
            if (i % 3 == 0) recorder_->fire(4, {com::Variant(L"A.DAT")});
        }
        return false;
    };
    std::mt19937 random(7);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        show([&](DialogDriver& driver) {
            const HWND window = driver.window();
            const auto question = [] { return FindWindowW(nullptr, L"Confirm file replace"); };
            driver.press(IDC_RECORDER_DOWNLOAD);
            // Questions are answered, or not, until the moment comes.
            for (auto left = random() % 12; left > 0; --left) {
                if (question() && random() % 2 == 0) PostMessageW(question(), WM_COMMAND, IDOK, 0);
                Sleep(random() % 4);
            }
            const WPARAM way = random() % 2 ? IDCANCEL : IDC_RECORDER_DOWNLOAD;
            PostMessageW(window, WM_COMMAND, way, 0);
            driver.waitUntil("the dialog is closed", [&] {
                const HWND asks = FindWindowW(nullptr, L"Cancel Download ?");
                if (asks) PostMessageW(asks, WM_COMMAND, IDYES, 0);
                // Asked over the other one, it has to be answered first.
                if (asks && question() && IsWindowEnabled(question()))
                    PostMessageW(question(), WM_COMMAND, IDCANCEL, 0);
                if (!asks && IsWindow(window)) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
                return !IsWindow(window);
            });
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RecorderDialogTest, testing::Bool(), [](const auto& kind) {
    return std::string(kind.param ? "Agile" : "Apartment");
});

}  // namespace
}  // namespace kel::test
