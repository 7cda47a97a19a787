// Runs the cases of cases.txt, each on a preprocessor of its own.
#include "tests/support/cases.h"
#include "tests/wine/script/preprocessor_fixture.h"

namespace kel::test {
namespace {

class ScriptCase : public PreprocessorTest, public testing::WithParamInterface<Case> {
protected:
    void apply(const std::string& setting) {
        const auto blank = setting.find(' ');
        const std::string name = setting.substr(0, blank);
        const std::string value = blank == setting.npos ? "" : setting.substr(blank + 1);
        if (name == "baud") {
            link_.baudRate = std::stol(value);
        } else if (name == "reply") {
            link_.reply = com::widen(value);
        } else if (name == "sdi12") {
            link_.isSdi12 = true;
        } else if (name == "radio") {
            link_.isRadio = true;
        } else if (name == "network") {
            link_.isSerial = false;
        } else if (setting == "no port") {
            link_.hasPort = false;
        } else if (setting == "no link") {
            com::check(preprocessor_->put_Communicator(nullptr));
        } else {
            for (const char answer : value)
                link_.answers[name].push_back(answer == '1');
        }
    }
};

TEST_P(ScriptCase, DoesOnTheLink) {
    for (const Step& step : GetParam().steps) {
        for (const std::string& setting : step.settings)
            apply(setting);
        const std::string result = run(step.text()) ? "true\n" : "false\n";
        EXPECT_EQ(result + link_.takeWork(), step.expected) << step.text();
    }
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptCase, testing::ValuesIn(readCases(KEL_SCRIPT_CASES)),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
