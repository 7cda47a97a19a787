// Runs and checks the scripts of cases.txt. The steps of a case share a bench.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/core/script/script_bench.h"
#include "tests/support/cases.h"

namespace kel::script {
namespace {

using test::Step;

std::vector<std::string> splitAt(char separator, const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, separator);)
        parts.push_back(part);
    return parts;
}

void apply(const std::string& setting, ScriptBench& bench) {
    const std::size_t blank = std::min(setting.find(' '), setting.size());
    const std::string value = setting.substr(std::min(blank + 1, setting.size()));
    if (setting.starts_with("answer")) bench.answers.push_back(splitAt('|', value));
    if (setting.starts_with("variable")) {
        bench.variables.set(value.substr(0, value.find('=')), value.substr(value.find('=') + 1));
    }
}

// What a step shows: whether the script ran, and the transcript.
std::string show(const Step& step, ScriptBench& bench) {
    const auto asks = [&](const char* setting) {
        return std::ranges::count(step.settings, setting) > 0;
    };
    bench.transcript.clear();
    bench.acceptsLines = !asks("refuse");
    bench.recordsEvents = asks("events");
    for (const std::string& setting : step.settings)
        apply(setting, bench);
    const std::string script = step.text();
    if (asks("check")) return show(bench.session.check(script, "s")) + bench.transcript;

    const bool result = bench.session.run(script, "s");
    EXPECT_EQ(bench.session.depth(), 0u);
    EXPECT_TRUE(result || !bench.session.diagnostics().empty());
    return (result ? "true\n" : "false\n") + bench.transcript +
           (asks("diagnostics") ? show(bench.session.diagnostics()) : "");
}

class ScriptCase : public testing::TestWithParam<test::Case> {};

TEST_P(ScriptCase, ShowsWhatIsExpected) {
    ScriptBench bench;
    for (const Step& step : GetParam().steps)
        EXPECT_EQ(show(step, bench), step.expected) << "line " << step.line << "\n" << step.text();
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptCase,
                         testing::ValuesIn(test::readCases("tests/core/script/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::script
