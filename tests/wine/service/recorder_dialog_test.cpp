// The recorder dialog under a user who cancels at any moment, which no scene tells.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "resources/resource_ids.h"
#include "tests/wine/support/stage.h"

namespace kel::test {
namespace {

// The parameter: whether recorder and collections are agile.
class RecorderDialogTest : public testing::TestWithParam<bool> {};

TEST_P(RecorderDialogTest, CancelledAtAnyMomentItNeverHangs) {
    const char* wanted = std::getenv("KEL_RECORDER_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 20;
    Stage stage;
    stage.play("make RecorderDialog");
    if (GetParam()) stage.play("recorder agile");
    stage.play("recorder does hurry A.DAT");
    stage.play("remember Recorder DownloadFolder = C:\\windows\\temp");
    stage.play("tell nothing");
    std::mt19937 random(7);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        stage.transcript.forget();
        {
            DialogDriver user([&](DialogDriver& driver) {
                const HWND window = driver.waitFor(L"Recorder");
                const auto question = [] { return FindWindowW(nullptr, L"Confirm file replace"); };
                driver.press(IDC_RECORDER_DOWNLOAD);
                // Questions are answered, or not, until the moment comes.
                for (auto left = random() % 12; left > 0; --left) {
                    if (question() && random() % 2 == 0)
                        PostMessageW(question(), WM_COMMAND, IDOK, 0);
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
            stage.play("ShowModal 0");
        }
        EXPECT_EQ(stage.transcript.step(0), "False\n");
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RecorderDialogTest, testing::Bool(), [](const auto& kind) {
    return std::string(kind.param ? "Agile" : "Apartment");
});

}  // namespace
}  // namespace kel::test
