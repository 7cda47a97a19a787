#include <algorithm>
#include <tuple>

#include "script/engine/session.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {
namespace {

using script::Diagnostic;
using script::Severity;

// Cancels a run before its first line. Nothing else may be asked of it.
class CancellingHost final : public script::Host, public script::Observer {
public:
    bool hasStarted = false;
    std::vector<Diagnostic> errorsBeforeStart;

    void echo(std::string_view) override { require(isRun, "a check shows nothing"); }
    void endErrorReport() override { require(isRun, "a check shows nothing"); }
    bool send(std::string_view) override { throw Violation("nothing is sent"); }
    void yield() override { require(hasStarted, "a script that fails to parse does not start"); }
    bool cancelRequested() override { return true; }
    void clearCancelRequest() override { hasStarted = true; }
    std::optional<std::size_t> findDirective(std::string_view name, std::size_t) override {
        return find(name);
    }
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t) override {
        return find(name);
    }
    script::DirectiveOutcome callDirective(std::size_t, std::span<const std::string>) override {
        throw Violation("nothing is called");
    }
    script::FunctionOutcome callFunction(std::size_t, std::span<const std::string>) override {
        throw Violation("nothing is called");
    }
    script::Answers ask(const script::Question&) override { throw Violation("nothing is asked"); }
    script::LocalTime localTime() override { throw Violation("nothing asks for the time"); }

    void diagnosed(const Diagnostic& diagnostic) override {
        if (!hasStarted) errorsBeforeStart.push_back(diagnostic);
    }

    bool isRun = false;

private:
    std::optional<std::size_t> find(std::string_view name) const {
        require(!isRun, "a cancelled run looks for no words");
        if (name.size() % 2 == 0) return std::nullopt;
        return 0;
    }
};

using Finding = std::tuple<std::size_t, std::size_t, Severity, std::string>;

std::vector<Finding> comparable(const std::vector<Diagnostic>& diagnostics) {
    std::vector<Finding> findings;
    for (const Diagnostic& each : diagnostics)
        findings.emplace_back(each.line, each.column, each.severity, each.message);
    return findings;
}

// The findings that stand for what a run reports before it starts.
std::vector<Finding> parseErrors(const std::vector<Diagnostic>& diagnostics) {
    std::vector<Finding> findings = comparable(diagnostics);
    std::erase_if(findings, [](const Finding& each) {
        return std::get<Severity>(each) == Severity::Warning ||
               std::get<std::string>(each) == "#ENDIF without matching #IF";
    });
    return findings;
}

}  // namespace

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines(1);
    for (const char& c : text) {
        const bool isSecondHalf = c == '\n' && &c != text.data() && (&c)[-1] == '\r';
        if (isSecondHalf) continue;
        if (c == '\r' || c == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += c;
        }
    }
    return lines;
}

bool isInside(const Diagnostic& diagnostic, const std::vector<std::string>& lines) {
    return diagnostic.line >= 1 && diagnostic.line <= lines.size() && diagnostic.column >= 1 &&
           diagnostic.column <= lines[diagnostic.line - 1].size() + 1;
}

void parseAnything(std::string_view input) {
    const DoubleByteRules rules;
    script::VariableStore variables(rules);
    variables.set("known", "1");
    CancellingHost host;
    script::Session session(host, variables, rules, host);

    const std::vector<Diagnostic> found = session.check(input);
    const std::vector<std::string> lines = linesOf(input);
    for (const Diagnostic& each : found)
        require(isInside(each, lines), "a finding lies inside the text");
    require(
        std::ranges::is_sorted(
            found, {}, [](const Diagnostic& each) { return std::pair(each.line, each.column); }),
        "findings are in the order of the text");
    require(variables.size() == 1 && session.diagnostics().empty(), "a check changes nothing");
    std::string again;
    for (const std::string& line : lines)
        again.append(line).append("\r\n");
    require(comparable(session.check(again)) == comparable(found),
            "the kind of line ends makes no difference");

    host.isRun = true;
    const bool result = session.run(input);
    const std::vector<Finding> expected = parseErrors(found);
    const std::vector<Finding> reported = comparable(host.errorsBeforeStart);
    if (host.hasStarted) {
        require(reported == expected, "a run that starts has reported what the check found");
        require(result || session.diagnostics().size() == reported.size() + 1,
                "a cancelled run tells so");
        return;
    }
    require(!result && !reported.empty(), "a run that does not start tells why");
    require(
        std::ranges::all_of(
            reported, [&](const Finding& each) { return std::ranges::count(expected, each) > 0; }),
        "the check finds what a run reports");
}

}  // namespace kel::fuzz
