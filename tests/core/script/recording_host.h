#pragma once
// A host on which tests run scripts: it writes down everything that it is asked for.

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "script/engine/session.h"
#include "script/engine/word_table.h"
#include "tests/support/cases.h"

namespace kel::script {

inline std::string join(std::span<const std::string> texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (&text == texts.data() ? "" : "|") + text;
    return joined;
}

// "script line:column severity message", a line each.
inline std::string show(std::span<const Diagnostic> diagnostics) {
    std::string text;
    for (const Diagnostic& each : diagnostics) {
        text += each.script + " " + std::to_string(each.line) + ":" + std::to_string(each.column) +
                (each.severity == Severity::Error ? " error " : " warning ") + each.message + "\n";
    }
    return text;
}

// Transcript, an entry a line: a sent line in quotes, "! " an error, "#name a|b" a directive's
// call, "name(a|b)" a function's call, "ask title [kind caption=initial: choices -> target]" a
// question. Names of words are folded and end with their number; control characters are shown as
// escapes.
class RecordingHost : public Host, public Observer {
public:
    using Parameters = std::span<const std::string>;

    // ECHO and join are handled; PASS and pass stand twice, the first row handing on; NONE or none
    // is never handled; FAIL and fail answer false; RUN runs its parameter as a script; CANCEL
    // cancels and runs another one; MISS reports a failure; GROW adds words and hands on to one.
    explicit RecordingHost(const TextRules& textRules = kAscii)
        : variables(textRules),
          directives(textRules),
          functions(textRules),
          session(*this, variables, textRules, *this) {
        const auto answer = [](bool handled, bool result) {
            return [=](Parameters) { return DirectiveOutcome{handled, result}; };
        };
        directives.add("ECHO", 0, answer(true, true));
        directives.add("PASS", 1, answer(false, true));
        directives.add("NONE", 2, answer(false, true));
        directives.add("pass", 3, answer(true, true));
        directives.add("FAIL", 4, answer(false, false));
        directives.add("RUN", 5, [this](Parameters parameters) {
            return DirectiveOutcome{true, session.run(parameters[0], "inner")};
        });
        directives.add("CANCEL", 6, [this](Parameters) {
            isCancelled = true;
            return DirectiveOutcome{true, session.run("a", "inner")};
        });
        directives.add("MISS", 7, [this](Parameters) {
            return DirectiveOutcome{true, session.report("Can't find file ", {"a", "b"})};
        });
        directives.add("GROW", 8, [=, this](Parameters) {
            for (int i = 0; i < 1000; ++i)
                directives.add("OTHER", 0, {});
            directives.add("grow", 9, answer(true, true));
            return DirectiveOutcome{false, true};
        });
        const auto value = [](bool handled, bool result) {
            return [=](Parameters parameters) {
                return FunctionOutcome{handled, result, join(parameters)};
            };
        };
        functions.add("join", 0, value(true, true));
        functions.add("pass", 1, value(false, true));
        functions.add("PASS", 2, value(true, true));
        functions.add("fail", 3, value(true, false));
        functions.add("none", 4, value(false, true));
    }

    void echo(std::string_view text) override { echoed_ += text; }
    void endErrorReport() override {
        countCall();
        const std::string_view start = "\r\nERROR: ";
        EXPECT_EQ(echoed_.substr(0, start.size()), start);
        write("! " + echoed_.substr(start.size()));
        echoed_.clear();
    }
    bool send(std::string_view line) override {
        countCall();
        write("\"" + std::string(line) + "\"");
        if (acceptsLines) lineSent(line);
        return acceptsLines;
    }
    void yield() override {
        countCall();
        EXPECT_GT(yieldsToCancel, 0u) << "a cancelled run goes on";
        if (--yieldsToCancel == 0) isCancelled = true;
    }
    bool cancelRequested() override { return isCancelled; }
    void clearCancelRequest() override { isCancelled = false; }
    std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) override {
        return directives.find(name, from);
    }
    DirectiveOutcome callDirective(std::size_t row, Parameters parameters) override {
        countCall();
        write("#" + nameOf(directives[row]) + " " + join(parameters));
        return directives[row].handler(parameters);
    }
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) override {
        return functions.find(name, from);
    }
    FunctionOutcome callFunction(std::size_t row, Parameters parameters) override {
        countCall();
        write(nameOf(functions[row]) + "(" + join(parameters) + ")");
        return functions[row].handler(parameters);
    }
    Answers ask(const Question& question) override {
        countCall();
        std::string entry = "ask " + question.title;
        for (const Control& control : question.controls) {
            const char* kinds[] = {"check", "select", "input"};
            entry += std::string(" [") + kinds[static_cast<int>(control.kind)] + " " +
                     control.caption + "=" + control.initial + ": " + join(control.choices) +
                     " -> " + control.target + "]";
        }
        write(entry);
        if (answers.empty()) return std::nullopt;
        const Answers answer = answers.front();
        answers.pop_front();
        return answer;
    }
    LocalTime localTime() override { return {2004, 3, 9, 7, 5, 9}; }

    void runStarted(std::string_view script, std::size_t depth) override {
        event("start " + std::string(script) + " " + std::to_string(depth));
    }
    void runEnded(std::string_view script, std::size_t depth, bool result) override {
        event("end " + std::string(script) + " " + std::to_string(depth) +
              (result ? " true" : " false"));
    }
    void lineStarted(std::size_t line) override { event("line " + std::to_string(line)); }
    void lineSent(std::string_view text) override { event("sent " + std::string(text)); }
    void directiveStarted(std::string_view name, Parameters parameters) override {
        event("directive " + std::string(name) + " " + join(parameters));
    }
    void variableSet(std::string_view name, std::string_view value) override {
        event("set " + std::string(name) + "=" + std::string(value));
    }
    void diagnosed(const Diagnostic& diagnostic) override {
        if (recordsEvents) transcript += show({&diagnostic, 1});
    }

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
    inline static const TextRules kAscii;

    static std::string nameOf(const auto& row) {
        return row.foldedName + std::to_string(row.number);
    }
    void event(const std::string& text) {
        if (recordsEvents) write(text);
    }
    void write(std::string_view entry) { transcript += test::escaped(entry) + "\n"; }
    void countCall() {
        if (callsBeforeFailure-- == 0) throw std::runtime_error("failing call");
    }

    std::string echoed_;
};

}  // namespace kel::script
