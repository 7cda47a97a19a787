// Runs and checks the scripts of cases.txt. The steps of a case share a bench.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/core/script/script_bench.h"
#include "tests/support/cases.h"

namespace kel::script {
namespace {

using test::Step;

// A tilde makes the next byte part of its character; letters are the host's.
class OtherCodePage : public TextRules {
public:
    bool isLeadByte(unsigned char byte) const override { return byte == '~'; }
    bool isLetter(unsigned char byte) const override {
        return byte > 0x7F || TextRules::isLetter(byte);
    }
    std::string fold(std::string_view text) const override {
        std::string folded = TextRules::fold(text);
        std::ranges::replace(folded, '\x89', '\xA9');  // the second halves of É and é
        return folded;
    }
};

std::vector<std::string> splitAt(char separator, const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, separator);)
        parts.push_back(part);
    return parts;
}

void apply(std::string value, ScriptBench& bench) {
    const std::string name = test::takeWord(value);
    const std::size_t sign = value.find('=');
    if (name == "answer") bench.answers.push_back(splitAt('|', value));
    if (name == "variable") bench.variables.set(value.substr(0, sign), value.substr(sign + 1));
    if (name == "clear") bench.variables.clear();
    if (name == "cancel") bench.yieldsToCancel = std::stoul(value);
    if (name == "cancelled") bench.isCancelled = true;
}

// What a step shows: whether the script ran, and the transcript.
std::string show(const Step& step, ScriptBench& bench) {
    const auto asks = [&](const char* setting) {
        return std::ranges::count(step.settings, setting) > 0;
    };
    bench.transcript.clear();
    bench.acceptsLines = !asks("refuse");
    bench.recordsEvents = asks("events");
    bench.isCancelled = false;
    for (const std::string& setting : step.settings)
        apply(setting, bench);
    const std::string script = step.text();
    if (asks("check")) return show(bench.session.check(script, "s")) + bench.transcript;

    std::string shown = bench.session.run(script, "s") ? "true\n" : "false\n";
    EXPECT_EQ(bench.session.depth(), 0u);
    EXPECT_TRUE(shown == "true\n" || !bench.session.diagnostics().empty());
    shown += bench.transcript;
    if (asks("diagnostics")) shown += show(bench.session.diagnostics());
    for (std::size_t i = 0; asks("variables") && i < bench.variables.size(); ++i)
        shown += bench.variables[i].name + "=" + bench.variables[i].value + "\n";
    return shown + (bench.isCancelled && asks("cancelled") ? "still cancelled\n" : "");
}

class ScriptCase : public testing::TestWithParam<test::Case> {};

TEST_P(ScriptCase, ShowsWhatIsExpected) {
    const std::vector<Step>& steps = GetParam().steps;
    const OtherCodePage other;
    const TextRules ascii;
    ScriptBench bench(std::ranges::count(steps[0].settings, "code page") > 0 ? other : ascii);
    for (const Step& step : steps)
        EXPECT_EQ(show(step, bench), step.expected) << "line " << step.line << "\n" << step.text();
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptCase,
                         testing::ValuesIn(test::readCases("tests/core/script/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::script
