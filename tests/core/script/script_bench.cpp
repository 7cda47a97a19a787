#include "tests/core/script/script_bench.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/cases.h"

namespace kel::script {

const TextRules ScriptBench::kAscii;

ScriptBench::ScriptBench(const TextRules& textRules)
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

void ScriptBench::endErrorReport() {
    countCall();
    const std::string_view start = "\r\nERROR: ";
    EXPECT_EQ(echoed_.substr(0, start.size()), start);
    write("! " + echoed_.substr(start.size()));
    echoed_.clear();
}

bool ScriptBench::send(std::string_view line) {
    countCall();
    write("\"" + std::string(line) + "\"");
    if (acceptsLines) lineSent(line);
    return acceptsLines;
}

void ScriptBench::yield() {
    countCall();
    EXPECT_GT(yieldsToCancel, 0u) << "a cancelled run goes on";
    if (--yieldsToCancel == 0) isCancelled = true;
}

std::optional<std::size_t> ScriptBench::findDirective(std::string_view name, std::size_t from) {
    return directives.find(name, from);
}

DirectiveOutcome ScriptBench::callDirective(std::size_t row, Parameters parameters) {
    countCall();
    write("#" + directives[row].foldedName + std::to_string(directives[row].number) + " " +
          join(parameters));
    return directives[row].handler(parameters);
}

std::optional<std::size_t> ScriptBench::findFunction(std::string_view name, std::size_t from) {
    return functions.find(name, from);
}

FunctionOutcome ScriptBench::callFunction(std::size_t row, Parameters parameters) {
    countCall();
    write(functions[row].foldedName + std::to_string(functions[row].number) + "(" +
          join(parameters) + ")");
    return functions[row].handler(parameters);
}

Answers ScriptBench::ask(const Question& question) {
    countCall();
    std::string entry = "ask " + question.title;
    for (const Control& control : question.controls) {
        const char* kinds[] = {"check", "select", "input"};
        entry += std::string(" [") + kinds[static_cast<int>(control.kind)] + " " + control.caption +
                 "=" + control.initial + ": " + join(control.choices) + " -> " + control.target +
                 "]";
    }
    write(entry);
    if (answers.empty()) return std::nullopt;
    const Answers answer = answers.front();
    answers.pop_front();
    return answer;
}

void ScriptBench::runStarted(std::string_view script, std::size_t depth) {
    event("start " + std::string(script) + " " + std::to_string(depth));
}

void ScriptBench::runEnded(std::string_view script, std::size_t depth, bool result) {
    event("end " + std::string(script) + " " + std::to_string(depth) +
          (result ? " true" : " false"));
}

void ScriptBench::directiveStarted(std::string_view name, Parameters parameters) {
    event("directive " + std::string(name) + " " + join(parameters));
}

void ScriptBench::variableSet(std::string_view name, std::string_view value) {
    event("set " + std::string(name) + "=" + std::string(value));
}

void ScriptBench::diagnosed(const Diagnostic& diagnostic) {
    if (recordsEvents) transcript += show({&diagnostic, 1});
}

void ScriptBench::event(const std::string& text) {
    if (recordsEvents) write(text);
}

void ScriptBench::write(std::string_view entry) {
    transcript += test::escaped(entry) + "\n";
}

void ScriptBench::countCall() {
    if (callsBeforeFailure-- == 0) throw std::runtime_error("failing call");
}

std::string join(std::span<const std::string> texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (&text == texts.data() ? "" : "|") + text;
    return joined;
}

std::string show(std::span<const Diagnostic> diagnostics) {
    std::string text;
    for (const Diagnostic& each : diagnostics) {
        text += each.script + " " + std::to_string(each.line) + ":" + std::to_string(each.column) +
                (each.severity == Severity::Error ? " error " : " warning ") + each.message + "\n";
    }
    return text;
}

}  // namespace kel::script
