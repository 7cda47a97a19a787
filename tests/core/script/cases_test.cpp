// Runs and checks the scripts of cases.txt. The steps of a case share a host.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/core/script/recording_host.h"
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

void apply(std::string value, RecordingHost& host) {
    const std::string name = test::takeWord(value);
    const std::size_t sign = value.find('=');
    if (name == "answer") host.answers.push_back(splitAt('|', value));
    if (name == "variable") host.variables.set(value.substr(0, sign), value.substr(sign + 1));
    if (name == "clear") host.variables.clear();
    if (name == "cancel") host.yieldsToCancel = std::stoul(value);
    if (name == "cancelled") host.isCancelled = true;
}

// What a step shows: whether the script ran, and the transcript.
std::string show(const Step& step, RecordingHost& host) {
    const auto asks = [&](const char* setting) {
        return std::ranges::count(step.settings, setting) > 0;
    };
    host.transcript.clear();
    host.acceptsLines = !asks("refuse");
    host.recordsEvents = asks("events");
    host.isCancelled = false;
    for (const std::string& setting : step.settings)
        apply(setting, host);
    const std::string script = step.text();
    if (asks("check")) return show(host.session.check(script, "s")) + host.transcript;

    std::string shown = host.session.run(script, "s") ? "true\n" : "false\n";
    EXPECT_EQ(host.session.depth(), 0u);
    EXPECT_TRUE(shown == "true\n" || !host.session.diagnostics().empty());
    shown += host.transcript;
    if (asks("diagnostics")) shown += show(host.session.diagnostics());
    for (std::size_t i = 0; asks("variables") && i < host.variables.size(); ++i)
        shown += host.variables[i].name + "=" + host.variables[i].value + "\n";
    return shown + (host.isCancelled && asks("cancelled") ? "still cancelled\n" : "");
}

class ScriptCase : public testing::TestWithParam<test::Case> {};

TEST_P(ScriptCase, ShowsWhatIsExpected) {
    const std::vector<Step>& steps = GetParam().steps;
    const OtherCodePage other;
    const TextRules ascii;
    RecordingHost host(std::ranges::count(steps[0].settings, "code page") > 0 ? other : ascii);
    for (const Step& step : steps)
        EXPECT_EQ(show(step, host), step.expected) << "line " << step.line << "\n" << step.text();
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptCase,
                         testing::ValuesIn(test::readCases("tests/core/script/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::script
