// Plays the cases of cases.txt, each on a preprocessor of its own.
#include <algorithm>

#include "tests/support/cases.h"
#include "tests/wine/script/preprocessor_fixture.h"
#include "tests/wine/support/late_bound.h"

namespace kel::test {
namespace {

class ScriptCase : public PreprocessorTest, public testing::WithParamInterface<Case> {
protected:
    // Gives what a call shows, and nothing for other settings.
    std::string apply(const std::string& setting) {
        const auto blank = setting.find(' ');
        const std::string name = setting.substr(0, blank);
        const std::string value = blank == setting.npos ? "" : setting.substr(blank + 1);
        if (name == "call") {
            const std::string results = call(preprocessor_.Get(), value);
            return results.empty() ? "" : results + "\n";
        }
        if (name == "baud") {
            link_.baudRate = std::stol(value);
        } else if (name == "reply") {
            link_.reply = com::widen(value);
        } else if (name == "sdi12") {
            link_.isSdi12 = true;
        } else if (name == "radio") {
            link_.isRadio = true;
        } else if (name == "network") {
            link_.isNetwork = true;
        } else if (setting == "no port") {
            link_.hasPort = false;
        } else if (setting == "no link") {
            com::check(preprocessor_->put_Communicator(nullptr));
        } else {
            for (const char answer : value)
                link_.answers[name].push_back(answer == '1');
        }
        return "";
    }

    // What a step shows: results of calls, whether the script ran, the work, its diagnostics.
    std::string play(const Step& step) {
        std::string shown;
        for (const std::string& setting : step.settings)
            shown += apply(setting);
        const auto asks = [&](const char* setting) {
            return std::ranges::count(step.settings, setting) > 0;
        };
        com::ComPtr<IScriptDiagnostics> diagnostics;
        if (asks("check")) {
            com::check(
                preprocessor_->Check(com::Bstr(com::widen(step.text())).get(), &diagnostics));
        } else if (!step.lines.empty()) {
            shown += run(step.text()) ? "true\n" : "false\n";
        }
        shown += link_.takeWork();
        if (asks("diagnostics")) com::check(preprocessor_->get_Diagnostics(&diagnostics));
        return diagnostics ? shown + show(diagnostics.Get()) : shown;
    }

    // "line:column severity message", an entry a line.
    static std::string show(IScriptDiagnostics* diagnostics) {
        long count = 0;
        com::check(diagnostics->get_Count(&count));
        long errors = 0;
        com::check(diagnostics->get_ErrorCount(&errors));
        std::string text = std::to_string(errors) + " error(s)\n";
        com::ComPtr<IScriptDiagnostic> none;
        EXPECT_EQ(diagnostics->get_Item(count, &none), DISP_E_BADINDEX);
        for (long i = 0; i < count; ++i) {
            com::ComPtr<IScriptDiagnostic> diagnostic;
            long line = 0;
            long column = 0;
            ScriptSeverity severity;
            com::Bstr message;
            com::check(diagnostics->get_Item(i, &diagnostic));
            com::check(diagnostic->get_Line(&line));
            com::check(diagnostic->get_Column(&column));
            com::check(diagnostic->get_Severity(&severity));
            com::check(diagnostic->get_Message(message.put()));
            text += std::to_string(line) + ":" + std::to_string(column) +
                    (severity == ScriptError ? " error " : " warning ") +
                    com::narrow(message.get()) + "\n";
        }
        return text;
    }
};

TEST_P(ScriptCase, DoesOnTheLink) {
    for (const Step& step : GetParam().steps)
        EXPECT_EQ(play(step), step.expected) << "line " << step.line << "\n" << step.text();
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptCase,
                         testing::ValuesIn(readCases("tests/wine/script/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
