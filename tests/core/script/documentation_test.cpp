// Runs the examples of the manual for script authors.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "script/engine/session.h"
#include "tests/support/project_file.h"

namespace kel::script {
namespace {

std::string readManual() {
    std::ifstream file(test::projectFile("docs/scripting.md"));
    return {std::istreambuf_iterator<char>(file), {}};
}

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
class ManualHost final : public Host {
public:
    std::string shown;
    Observer observer;

    void echo(std::string_view text) override { shown += text; }
    void endErrorReport() override { shown += "\n"; }
    bool send(std::string_view line) override {
        observer.lineSent(line);
        return show(std::string(line));
    }
    void yield() override {}
    bool cancelRequested() override { return false; }
    void clearCancelRequest() override {}

    std::optional<std::size_t> findDirective(std::string_view name, std::size_t) override {
        directive_ = name;
        return 0;
    }

    DirectiveOutcome callDirective(std::size_t, std::span<const std::string> parameters) override {
        for (const std::string& parameter : parameters)
            directive_ += " " + parameter;
        return {true, show("[" + directive_ + "]")};
    }

    std::optional<std::size_t> findFunction(std::string_view name, std::size_t) override {
        if (name == "DATE") return 0;
        return std::nullopt;
    }

    FunctionOutcome callFunction(std::size_t, std::span<const std::string>) override {
        return {true, true, dateText(localTime())};
    }

    LocalTime localTime() override { return {2026, 3, 9, 13, 5, 59}; }

    Answers ask(const Question& question) override {
        std::vector<std::string> answers;
        std::string controls;
        for (const Control& control : question.controls) {
            controls += (controls.empty() ? "" : "; ") + control.caption;
            answers.push_back(control.initial);
        }
        show("[dialog " + question.title + ": " + controls + "]");
        return answers;
    }

private:
    bool show(const std::string& line) {
        shown += line + "\n";
        return true;
    }

    std::string directive_;
};

TEST(Manual, ExamplesDoWhatItSays) {
    const std::string manual = readManual();
    std::string_view rest = manual;
    std::size_t examples = 0;
    while (const auto script = takeBlock(rest, "kel")) {
        const auto expected = takeBlock(rest, "text");
        ASSERT_TRUE(expected) << *script;
        ManualHost host;
        const TextRules rules;
        VariableStore variables(rules);
        Session session(host, variables, rules, host.observer);
        EXPECT_TRUE(session.run(*script)) << *script;
        EXPECT_EQ(host.shown, *expected) << *script;
        ++examples;
    }
    EXPECT_GE(examples, 7u);
}

}  // namespace
}  // namespace kel::script
