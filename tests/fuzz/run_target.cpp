// Runs scripts on a host that does anything a host may do, as its input tells, and watches that the
// engine keeps its promises.
#include <algorithm>

#include "script/engine/prepared_answers.h"
#include "script/engine/session.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {
namespace {

constexpr std::size_t kRows = 3;           // of every installed word
constexpr std::size_t kNestedRuns = 64;    // keeps a single input short
constexpr std::size_t kCallsPerByte = 16;  // more than any script takes

// What the host throws; passes through the engine.
struct HostFailure {};

class AnyHost final : public script::Host, public script::Observer {
public:
    using Parameters = std::span<const std::string>;

    // `script` is what pieces are cut from. Every choice takes one byte of `choices`; when they
    // are used up all goes well.
    explicit AnyHost(std::string_view script) : script_(script) {}

    // Runs the script with all that happens on the way. Returns everything the host has seen.
    std::string drive(std::string_view choices) {
        choices_ = choices;
        nestedRuns_ = 0;
        seen_.clear();
        variables_.clear();
        try {
            see(run(script_) ? "true" : "false", {});
        } catch (const HostFailure&) {
            see("failure", {});
        }
        require(session_.depth() == 0 && runs_.empty(), "nothing runs after a run");
        require(!isMisplaced_, "an error lies inside the script that runs");
        for (std::size_t i = 0; i < variables_.size(); ++i)
            see(variables_[i].name, variables_[i].value);
        return seen_;
    }

    void echo(std::string_view text) override {
        see("echo", text);
        mayFail();
    }
    void endErrorReport() override { mayFail(); }
    bool send(std::string_view line) override {
        step();
        see("send", line);
        meddle();
        return outcome(choose(8) != 1);
    }
    void yield() override {
        require(!runs_.empty(), "only a run yields");
        runs_.back().isExecuting = true;
        step();
        meddle();
    }
    bool cancelRequested() override {
        step();
        return !outcome(choose(32) != 1);
    }
    void clearCancelRequest() override { mayFail(); }
    std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) override {
        return find(name, from);
    }
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) override {
        return find(name, from);
    }
    script::DirectiveOutcome callDirective(std::size_t row, Parameters parameters) override {
        seeCall("directive", row, parameters);
        const bool nested = parameters.empty() || choose(4) != 1 || run(std::string(parameters[0]));
        const bool handled = choose(4) != 1;
        return {handled, outcome(nested && choose(8) != 1)};
    }
    script::FunctionOutcome callFunction(std::size_t row, Parameters parameters) override {
        seeCall("function", row, parameters);
        const bool handled = choose(4) != 1;
        const bool result = outcome(choose(8) != 1);
        return {handled, result, std::string(parameters.empty() ? piece() : parameters.back())};
    }
    script::Answers ask(const script::Question& question) override {
        step();
        see("ask", question.title);
        std::vector<std::string> results;
        for (const script::Control& control : question.controls) {
            see(control.caption, control.initial);
            const auto& choices = control.choices;
            require(control.kind != script::ControlKind::Check || control.initial == "0" ||
                        control.initial == "1",
                    "a check is on or off");
            require(control.kind != script::ControlKind::Select ||
                        (choices.empty() ? control.initial.empty()
                                         : std::ranges::count(choices, control.initial) > 0),
                    "a select shows one of its choices");
            results.push_back(choose(2) == 1 ? std::string(piece()) : control.initial);
        }
        meddle();
        script::Answers answers = results;
        const unsigned choice = choose(8);
        if (choice == 1) answers.reset();
        if (choice == 2) answers->resize(choose(4));
        if (choice == 3) answers = prepared(question);
        outcome(answers && answers->size() == question.controls.size());
        return answers;
    }
    script::LocalTime localTime() override { return {}; }

    void runStarted(std::string_view name, std::size_t depth) override {
        see("start", name);
        require(depth == runs_.size() + 1 && depth == session_.depth(), "runs nest");
        require(depth <= script::Session::kMaximumDepth, "depth is limited");
        mayFail();
        runs_.push_back({linesOf(startingText_), 0, kCallsPerByte * (startingText_.size() + 1)});
    }
    void runEnded(std::string_view name, std::size_t depth, bool result) override {
        see("end", name);
        require(depth == runs_.size(), "the innermost run ends first");
        require(!result || !runs_.back().isOver, "a run in which a step failed fails");
        runs_.pop_back();
        lastResult_ = result;
    }
    void lineStarted(std::size_t line) override {
        step();
        Run& run = runs_.back();
        require(line > run.lastLine && line <= run.lines.size(),
                "lines run in the order of the text");
        run.lastLine = line;
        see("line", std::to_string(line));
        mayFail();
    }
    void directiveStarted(std::string_view name, Parameters) override {
        step();
        see("directive", name);
        mayFail();
    }
    void variableSet(std::string_view name, std::string_view value) override {
        step();
        see(name, value);
        const std::string* stored = variables_.find(name);
        require(stored != nullptr && *stored == value, "a variable has the value it was given");
        mayFail();
    }
    void diagnosed(const script::Diagnostic& diagnostic) override {
        see(diagnostic.script + ":" + std::to_string(diagnostic.line) + ":" +
                std::to_string(diagnostic.column),
            diagnostic.message);
        if (runs_.empty() || !isInside(diagnostic, runs_.back().lines)) isMisplaced_ = true;
        ++errors_;
        mayFail();
    }

private:
    // A script that runs.
    struct Run {
        std::vector<std::string> lines;
        std::size_t lastLine = 0;
        std::size_t callsLeft = 0;
        bool isExecuting = false;
        bool isOver = false;  // something has failed in it
    };

    // The next byte, brought into a range; 0 when there is none.
    unsigned choose(unsigned count) {
        if (choices_.empty()) return 0;
        const auto byte = static_cast<unsigned char>(choices_.front());
        choices_.remove_prefix(1);
        return byte % count;
    }

    // Some part of the script.
    std::string_view piece() {
        const unsigned high = choose(256);
        const std::size_t start = (high * 256 + choose(256)) % (script_.size() + 1);
        return script_.substr(start, choose(256));
    }

    // Whatever a run does must come while it executes, and before anything has failed in it.
    void step() {
        require(!runs_.empty() && runs_.back().isExecuting,
                "only a script that parsed does anything");
        require(!runs_.back().isOver, "a run does nothing after a step that failed");
        require(runs_.back().callsLeft-- > 0, "a run asks no more than its length allows");
    }

    bool outcome(bool result) {
        if (!result) runs_.back().isOver = true;
        return result;
    }

    void mayFail() {
        if (choose(64) == 1) throw HostFailure();
    }

    // What may happen while the engine calls out.
    void meddle() {
        const unsigned deed = choose(16);
        if (deed == 1) throw HostFailure();
        if (deed == 2) run(piece());
        if (deed == 3) run(script_);
        if (deed == 4) {
            try {
                run(piece());
            } catch (const HostFailure&) {
            }
        }
        if (deed == 5) {
            const std::string name(piece());
            variables_.set(name, std::string(piece()));
        }
        if (deed == 6) variables_.clear();
        if (deed == 7) check(piece());
        if (deed == 8) require(!session_.report("reported"), "a report is no success");
    }

    // Runs a text that stands alone in memory, so that a read beyond it is seen.
    bool run(std::string_view script) {
        if (nestedRuns_++ == kNestedRuns) return true;
        const std::vector<char> text(script.begin(), script.end());
        startingText_ = {text.data(), text.size()};
        const std::size_t depth = session_.depth();
        const std::size_t errorsBefore = errors_;
        const bool isTooDeep = depth == script::Session::kMaximumDepth;
        bool result = false;
        try {
            result = session_.run(startingText_, "depth " + std::to_string(depth));
        } catch (const HostFailure&) {
            require(session_.depth() == depth && runs_.size() == depth,
                    "a failure leaves no run behind");
            throw;
        }
        require(session_.depth() == depth && runs_.size() == depth, "a run leaves no run behind");
        require(isTooDeep ? !result : result == lastResult_,
                "the result is what the observer was told");
        require(result || errors_ > errorsBefore, "a run that fails tells why");
        return result;
    }

    void check(std::string_view script) {
        isChecking_ = true;
        for (const script::Diagnostic& each : session_.check(script))
            see("found", each.message);
        isChecking_ = false;
    }

    std::optional<std::size_t> find(std::string_view name, std::size_t from) {
        if (isChecking_) return std::nullopt;
        step();
        see("find", name);
        mayFail();
        if (from >= kRows || choose(16) == 1) return std::nullopt;
        return from;
    }

    script::Answers prepared(const script::Question& question) {
        script::PreparedAnswers answers(rules_);
        for (const script::Control& control : question.controls)
            answers.set(control.target.empty() ? control.caption : control.target,
                        std::string(piece()));
        std::string missing;
        const script::Answers given = answers.answer(question, missing);
        require(!given || given->size() == question.controls.size(),
                "every control has its answer");
        return given;
    }

    void seeCall(std::string_view kind, std::size_t row, Parameters parameters) {
        step();
        require(row < kRows, "a row that was found is called");
        see(kind, std::to_string(row));
        for (const std::string& parameter : parameters)
            see("parameter", parameter);
        meddle();
    }

    void see(std::string_view kind, std::string_view text) {
        seen_.append(kind).append(" ").append(text).append("\n");
    }

    std::string_view script_;
    const DoubleByteRules rules_;
    script::VariableStore variables_{rules_};
    script::Session session_{*this, variables_, rules_, *this};

    std::string_view choices_;
    std::string seen_;
    std::vector<Run> runs_;
    std::string_view startingText_;
    std::size_t nestedRuns_ = 0;
    std::size_t errors_ = 0;
    bool isChecking_ = false;
    // Kept, since the engine drops what is thrown while it notes a failure.
    bool isMisplaced_ = false;
    bool lastResult_ = false;
};

}  // namespace

void runAnything(std::string_view input) {
    const std::size_t end = std::min(input.find('\0'), input.size());
    const std::string_view choices = input.substr(std::min(end + 1, input.size()));
    AnyHost host(input.substr(0, end));
    const std::string first = host.drive(choices);
    require(host.drive(choices) == first, "whatever happened, the next run is as the first");
}

}  // namespace kel::fuzz
