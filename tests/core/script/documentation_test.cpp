// Runs the examples of the manual for script authors.
#include <gtest/gtest.h>

#include "tests/core/script/recording_host.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"

namespace kel::script {
namespace {

// The text between the next fence of a language and its end; what follows remains in `rest`.
std::optional<std::string> takeBlock(std::string_view& rest, std::string_view language) {
    const std::string fence = "\n```" + std::string(language) + "\n";
    const std::size_t start = rest.find(fence);
    if (start == std::string_view::npos) return std::nullopt;
    rest.remove_prefix(start + fence.size());
    const std::size_t end = rest.find("```");
    const std::string block(rest.substr(0, end));
    rest.remove_prefix(end);
    return block;
}

// Shows what an example does as the manual does: sent lines as they stand, words in brackets. The
// user accepts what every question shows at first.
class ManualHost final : public RecordingHost {
public:
    Observer nobody;

    void echo(std::string_view text) override { transcript += text; }
    void endErrorReport() override { transcript += "\n"; }
    bool send(std::string_view line) override {
        nobody.lineSent(line);
        return show(std::string(line));
    }

    std::optional<std::size_t> findDirective(std::string_view name, std::size_t) override {
        directive_ = name;
        return 0;
    }
    DirectiveOutcome callDirective(std::size_t, Parameters parameters) override {
        for (const std::string& parameter : parameters)
            directive_ += " " + parameter;
        return {true, show("[" + directive_ + "]")};
    }
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t) override {
        if (name == "DATE") return 0;
        return std::nullopt;
    }
    FunctionOutcome callFunction(std::size_t, Parameters) override {
        return {true, true, dateText(localTime())};
    }
    LocalTime localTime() override { return {2026, 3, 9, 13, 5, 59}; }

    Answers ask(const Question& question) override {
        std::vector<std::string> initial;
        std::string controls;
        for (const Control& control : question.controls) {
            controls += (controls.empty() ? "" : "; ") + control.caption;
            initial.push_back(control.initial);
        }
        show("[dialog " + question.title + ": " + controls + "]");
        return initial;
    }

private:
    bool show(const std::string& line) {
        transcript += line + "\n";
        return true;
    }

    std::string directive_;
};

TEST(Manual, ExamplesDoWhatItSays) {
    const std::string manual = test::TemporaryFile::bytesOf(test::projectFile("docs/scripting.md"));
    std::string_view rest = manual;
    std::size_t examples = 0;
    while (const auto script = takeBlock(rest, "kel")) {
        const auto expected = takeBlock(rest, "text");
        ASSERT_TRUE(expected) << *script;
        ManualHost host;
        const TextRules rules;
        Session session(host, host.variables, rules, host.nobody);
        EXPECT_TRUE(session.run(*script)) << *script;
        EXPECT_EQ(host.transcript, *expected) << *script;
        ++examples;
    }
    EXPECT_GE(examples, 7u);
}

}  // namespace
}  // namespace kel::script
