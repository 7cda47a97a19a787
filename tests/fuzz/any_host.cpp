#include "tests/fuzz/any_host.h"

#include <algorithm>

#include "script/engine/prepared_answers.h"

namespace kel::fuzz {
namespace {

constexpr std::size_t kRows = 3;           // of every installed word
constexpr std::size_t kNestedRuns = 64;    // keeps a single input short
constexpr std::size_t kCallsPerByte = 16;  // more than any script takes

}  // namespace

std::string AnyHost::drive(std::string_view choices) {
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

void AnyHost::echo(std::string_view text) {
    see("echo", text);
    mayFail();
}

bool AnyHost::send(std::string_view line) {
    step();
    see("send", line);
    meddle();
    return outcome(choose(8) != 1);
}

void AnyHost::yield() {
    require(!runs_.empty(), "only a run yields");
    runs_.back().isExecuting = true;
    step();
    meddle();
}

bool AnyHost::cancelRequested() {
    step();
    return !outcome(choose(32) != 1);
}

std::optional<std::size_t> AnyHost::findDirective(std::string_view name, std::size_t from) {
    return find(name, from);
}

std::optional<std::size_t> AnyHost::findFunction(std::string_view name, std::size_t from) {
    return find(name, from);
}

script::DirectiveOutcome AnyHost::callDirective(std::size_t row,
                                                std::span<const std::string> parameters) {
    step();
    require(row < kRows, "a row that was found is called");
    see("directive", std::to_string(row));
    for (const std::string& parameter : parameters)
        see("parameter", parameter);
    meddle();
    const bool nested = parameters.empty() || choose(4) != 1 || run(std::string(parameters[0]));
    const bool handled = choose(4) != 1;
    return {handled, outcome(nested && choose(8) != 1)};
}

script::FunctionOutcome AnyHost::callFunction(std::size_t row,
                                              std::span<const std::string> parameters) {
    step();
    require(row < kRows, "a row that was found is called");
    see("function", std::to_string(row));
    for (const std::string& parameter : parameters)
        see("parameter", parameter);
    meddle();
    const bool handled = choose(4) != 1;
    const bool result = outcome(choose(8) != 1);
    return {handled, result, std::string(parameters.empty() ? piece() : parameters.back())};
}

script::Answers AnyHost::ask(const script::Question& question) {
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
    switch (choose(8)) {
        case 1:
            answers.reset();
            break;
        case 2:
            answers->resize(choose(4));
            break;
        case 3:
            answers = prepared(question);
            break;
        default:
            break;
    }
    outcome(answers && answers->size() == question.controls.size());
    return answers;
}

script::Answers AnyHost::prepared(const script::Question& question) {
    script::PreparedAnswers answers(rules_);
    for (const script::Control& control : question.controls)
        answers.set(control.target.empty() ? control.caption : control.target,
                    std::string(piece()));
    std::string missing;
    const script::Answers given = answers.answer(question, missing);
    require(!given || given->size() == question.controls.size(), "every control has its answer");
    return given;
}

void AnyHost::runStarted(std::string_view name, std::size_t depth) {
    see("start", name);
    require(depth == runs_.size() + 1 && depth == session_.depth(), "runs nest");
    require(depth <= script::Session::kMaximumDepth, "depth is limited");
    mayFail();
    runs_.push_back({linesOf(startingText_), 0, kCallsPerByte * (startingText_.size() + 1)});
}

void AnyHost::runEnded(std::string_view name, std::size_t depth, bool result) {
    see("end", name);
    require(depth == runs_.size(), "the innermost run ends first");
    require(!result || !runs_.back().isOver, "a run in which a step failed fails");
    runs_.pop_back();
    lastResult_ = result;
}

void AnyHost::lineStarted(std::size_t line) {
    step();
    Run& run = runs_.back();
    require(line > run.lastLine && line <= run.lines.size(), "lines run in the order of the text");
    run.lastLine = line;
    see("line", std::to_string(line));
    mayFail();
}

void AnyHost::directiveStarted(std::string_view name, std::span<const std::string> /*parameters*/) {
    step();
    see("directive", name);
    mayFail();
}

void AnyHost::variableSet(std::string_view name, std::string_view value) {
    step();
    see(name, value);
    const std::string* stored = variables_.find(name);
    require(stored != nullptr && *stored == value, "a variable has the value it was given");
    mayFail();
}

void AnyHost::diagnosed(const script::Diagnostic& diagnostic) {
    see(diagnostic.script + ":" + std::to_string(diagnostic.line) + ":" +
            std::to_string(diagnostic.column),
        diagnostic.message);
    if (runs_.empty() || !isInside(diagnostic, runs_.back().lines)) isMisplaced_ = true;
    ++errors_;
    mayFail();
}

// The next byte, brought into a range; 0 when there is none.
unsigned AnyHost::choose(unsigned count) {
    if (choices_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(choices_.front());
    choices_.remove_prefix(1);
    return byte % count;
}

// Some part of the script.
std::string_view AnyHost::piece() {
    const unsigned high = choose(256);
    const std::size_t start = (high * 256 + choose(256)) % (script_.size() + 1);
    return script_.substr(start, choose(256));
}

// Whatever a run does must come while it executes, and before anything has failed in it.
void AnyHost::step() {
    require(!runs_.empty() && runs_.back().isExecuting, "only a script that parsed does anything");
    require(!runs_.back().isOver, "a run does nothing after a step that failed");
    require(runs_.back().callsLeft-- > 0, "a run asks no more than its length allows");
}

bool AnyHost::outcome(bool result) {
    if (!result) runs_.back().isOver = true;
    return result;
}

void AnyHost::mayFail() {
    if (choose(64) == 1) throw HostFailure();
}

// What may happen while the engine calls out.
void AnyHost::meddle() {
    switch (choose(16)) {
        case 1:
            throw HostFailure();
        case 2:
            run(piece());
            break;
        case 3:
            run(script_);
            break;
        case 4:
            try {
                run(piece());
            } catch (const HostFailure&) {
            }
            break;
        case 5: {
            const std::string name(piece());
            variables_.set(name, std::string(piece()));
            break;
        }
        case 6:
            variables_.clear();
            break;
        case 7:
            check(piece());
            break;
        case 8:
            require(!session_.report("reported"), "a report is no success");
            break;
        default:
            break;
    }
}

// Runs a text that stands alone in memory, so that a read beyond it is seen.
bool AnyHost::run(std::string_view script) {
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

void AnyHost::check(std::string_view script) {
    isChecking_ = true;
    for (const script::Diagnostic& each : session_.check(script))
        see("found", each.message);
    isChecking_ = false;
}

std::optional<std::size_t> AnyHost::find(std::string_view name, std::size_t from) {
    if (isChecking_) return std::nullopt;
    step();
    see("find", name);
    mayFail();
    if (from >= kRows || choose(16) == 1) return std::nullopt;
    return from;
}

void AnyHost::see(std::string_view kind, std::string_view text) {
    seen_.append(kind).append(" ").append(text).append("\n");
}

}  // namespace kel::fuzz
