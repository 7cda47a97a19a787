// Replays the corpus: what a fuzzer has found once stays found.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/target.h"
#include "tests/support/project_file.h"

namespace kel::fuzz {
namespace {

using Target = void (*)(std::string_view);

class Corpus : public testing::TestWithParam<std::pair<const char*, Target>> {};

TEST_P(Corpus, KeepsAllPromises) {
    const auto& [folder, target] = GetParam();
    std::size_t files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(test::projectFile("tests/fuzz/corpus") / folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
        EXPECT_NO_THROW(target({input.data(), input.size()})) << entry.path();
        ++files;
    }
    EXPECT_GE(files, 5u);
}

INSTANTIATE_TEST_SUITE_P(
    Fuzz, Corpus,
    testing::Values(std::pair("parse", &parseAnything), std::pair("run", &runAnything),
                    std::pair("restore", &restoreAnything), std::pair("recall", &recallAnything),
                    std::pair("filter", &filterAnything), std::pair("replay", &replayAnything),
                    std::pair("report", &reportAnything)),
    [](const auto& row) { return std::string(row.param.first); });

}  // namespace
}  // namespace kel::fuzz
