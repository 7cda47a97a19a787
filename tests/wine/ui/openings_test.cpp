// Every window of the library, opened again and again.
#include <gtest/gtest.h>

#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/resource_counts.h"
#include "tests/wine/support/scene.h"

namespace kel::test {
namespace {

class OpeningsTest : public testing::TestWithParam<Scene> {};

TEST_P(OpeningsTest, LeaveNothingBehind) {
    expectNothingLeft([] {
        play(GetParam(),
             [](HWND window) { EXPECT_EQ(faultsOf(window), std::vector<std::string>()); });
    });
}

// As the system does it, other than Wine: a dialog whose messages carry narrow texts.
INT_PTR WINAPI showNarrow(HINSTANCE module, const char* name, HWND owner, DLGPROC procedure,
                          LPARAM parameter) {
    const HRSRC resource = FindResourceA(module, name, reinterpret_cast<const char*>(RT_DIALOG));
    return DialogBoxIndirectParamA(
        module, static_cast<DLGTEMPLATE*>(LockResource(LoadResource(module, resource))), owner,
        procedure, parameter);
}

TEST(NarrowDialogsTest, ShowTheSame) {
    const ImportPatch patch(kelUtils().module(), "AtlAxDialogBoxA",
                            reinterpret_cast<void*>(showNarrow));
    for (const auto& scene : readScenes("tests/wine/scenes/network.txt"))
        play(scene);
}

INSTANTIATE_TEST_SUITE_P(Windows, OpeningsTest, testing::ValuesIn(readOpenings()));

}  // namespace
}  // namespace kel::test
