// Runs the cases of cases.txt, each on a preprocessor of its own.
#include "tests/wine/script/preprocessor_fixture.h"

namespace kel::test {
namespace {

struct Case {
    int line = 0;
    std::string script;
    std::vector<std::string> settings;
    std::string result;
    std::string calls;
};

void PrintTo(const Case& row, std::ostream* stream) {
    *stream << "Line" << row.line;
}

std::vector<Case> readCases() {
    std::vector<Case> cases;
    int number = 0;
    bool isOpen = false;
    for (const std::string& line : resourceLines(L"cases")) {
        ++number;
        if (line.empty() || line.starts_with("# ")) {
            isOpen = false;
            continue;
        }
        if (!isOpen) cases.emplace_back().line = number;
        isOpen = true;
        Case& row = cases.back();
        const std::string rest = line.substr(std::min<std::size_t>(2, line.size()));
        if (line[0] == '>') {
            row.script += rest + "\n";
        } else if (line[0] == '?') {
            row.settings.push_back(rest);
        } else if (row.result.empty()) {
            row.result = line;
        } else {
            row.calls += line + "\n";
        }
    }
    return cases;
}

std::wstring unescaped(std::string_view text) {
    std::wstring all = com::widen(text);
    for (const auto& [mark, character] : {std::pair(L"\\r", L"\r"), {L"\\n", L"\n"}}) {
        for (auto at = all.find(mark); at != all.npos; at = all.find(mark)) {
            all.replace(at, 2, character);
        }
    }
    return all;
}

class ScriptCase : public PreprocessorTest, public testing::WithParamInterface<Case> {
protected:
    void apply(const std::string& setting) {
        const auto blank = setting.find(' ');
        const std::string name = setting.substr(0, blank);
        const std::string value = blank == setting.npos ? "" : setting.substr(blank + 1);
        if (name == "baud") {
            link_.baudRate = std::stol(value);
        } else if (name == "reply") {
            link_.reply = unescaped(value);
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
    for (const std::string& setting : GetParam().settings)
        apply(setting);
    EXPECT_EQ(run(GetParam().script) ? "true" : "false", GetParam().result) << GetParam().script;
    EXPECT_EQ(link_.takeWork(), GetParam().calls) << GetParam().script;
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptCase, testing::ValuesIn(readCases()),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
