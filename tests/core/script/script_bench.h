#pragma once
// A bench that runs scripts against a host which writes down everything it is asked for.

#include <deque>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "script/engine/session.h"
#include "script/engine/word_table.h"

namespace kel::script {

// Transcript, an entry a line: a sent line in quotes, "! " an error, "#name a|b" a directive's
// call, "name(a|b)" a function's call, "ask title [kind caption=initial: choices -> target]" a
// question. Names of words are folded and end with their number; control characters are shown as
// escapes.
class ScriptBench : public Host, public Observer {
public:
    using Parameters = std::span<const std::string>;

    // ECHO and join are handled; PASS and pass stand twice, the first row handing on; NONE or none
    // is never handled; FAIL and fail answer false; RUN runs its parameter as a script; CANCEL
    // cancels and runs another one; MISS reports a failure; GROW adds words and hands on to one.
    explicit ScriptBench(const TextRules& textRules = kAscii);

    void echo(std::string_view text) override { echoed_ += text; }
    void endErrorReport() override;
    bool send(std::string_view line) override;
    void yield() override;
    bool cancelRequested() override { return isCancelled; }
    void clearCancelRequest() override { isCancelled = false; }
    std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) override;
    DirectiveOutcome callDirective(std::size_t row, Parameters parameters) override;
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) override;
    FunctionOutcome callFunction(std::size_t row, Parameters parameters) override;
    Answers ask(const Question& question) override;
    LocalTime localTime() override { return {2004, 3, 9, 7, 5, 9}; }

    void runStarted(std::string_view script, std::size_t depth) override;
    void runEnded(std::string_view script, std::size_t depth, bool result) override;
    void lineStarted(std::size_t line) override { event("line " + std::to_string(line)); }
    void lineSent(std::string_view text) override { event("sent " + std::string(text)); }
    void directiveStarted(std::string_view name, Parameters parameters) override;
    void variableSet(std::string_view name, std::string_view value) override;
    void diagnosed(const Diagnostic& diagnostic) override;

    std::string transcript;
    bool recordsEvents = false;
    std::deque<Answers> answers;  // to the next questions; cancelled when there are no more
    bool acceptsLines = true;
    bool isCancelled = false;
    std::size_t yieldsToCancel = SIZE_MAX;      // the user cancels in the last of them
    std::size_t callsBeforeFailure = SIZE_MAX;  // the call after them throws

    VariableStore variables;
    WordTable<std::function<DirectiveOutcome(Parameters)>> directives;
    WordTable<std::function<FunctionOutcome(Parameters)>> functions;
    Session session;

private:
    static const TextRules kAscii;

    void event(const std::string& text);
    void countCall();
    void write(std::string_view entry);

    std::string echoed_;
};

std::string join(std::span<const std::string> texts);

// "script line:column severity message", a line each.
std::string show(std::span<const Diagnostic> diagnostics);

}  // namespace kel::script
