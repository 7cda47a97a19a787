// Plays the scenes of this folder.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/project_file.h"
#include "tests/wine/support/scene.h"

namespace kel::test {
namespace {

std::vector<Scene> allScenes() {
    const std::filesystem::path folder = "tests/wine/scenes";
    // By a file: the build folder has a folder of this name, too.
    const auto here = projectFile(folder / "serial.txt").parent_path();
    std::vector<Scene> all;
    for (const auto& entry : std::filesystem::directory_iterator(here)) {
        if (entry.path().extension() != ".txt" || entry.path().stem() == "CMakeLists") continue;
        for (Scene& scene : readScenes((folder / entry.path().filename()).generic_string()))
            all.push_back(std::move(scene));
    }
    return all;
}

class ScenesTest : public testing::TestWithParam<Scene> {};

TEST_P(ScenesTest, Plays) {
    play(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Of, ScenesTest, testing::ValuesIn(allScenes()),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
