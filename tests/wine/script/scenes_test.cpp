// Plays the scenes of this room, which need no keyboard.
#include <gtest/gtest.h>

#include "tests/wine/support/scene.h"

namespace kel::test {
namespace {

class PreprocessorScenes : public testing::TestWithParam<Scene> {};

TEST_P(PreprocessorScenes, Play) {
    play(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Link, PreprocessorScenes,
                         testing::ValuesIn(readScenes("tests/wine/script/link.txt")),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Host, PreprocessorScenes,
                         testing::ValuesIn(readScenes("tests/wine/script/host.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
