#include "hosts/kelrun/run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "com/apartment.h"
#include "hosts/kelrun/check.h"
#include "hosts/kelrun/host_script.h"
#include "hosts/kelrun/model/dialogue_text.h"
#include "hosts/kelrun/preprocessor.h"
#include "hosts/kelrun/run_log.h"
#include "hosts/kelrun/session.h"
#include "hosts/model/unicode.h"
#include "hosts/shared/activation_context.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/visible_text.h"
#include "hosts/shared/script_file.h"

namespace kel::kelrun {
namespace {

using Clock = std::chrono::steady_clock;

// How the script ended, and why: nothing when there is no more to tell, or more than one line.
struct Ending {
    ExitCode code;
    std::vector<Diagnostic> reasons;  // without a file: of no place in a script
    std::string words = {};
};

// What a run is made of; all of it outlives the run.
struct Task {
    const Options& options;
    const ScriptFile& script;
    const Preprocessor& preprocessor;
    const std::vector<Diagnostic>& found;  // by the check
    HostScript* hostScript;                // may be null
    FindingWriter& writer;
    RunLog& log;
    ConsoleOutput& errors;
};

void say(ConsoleOutput& errors, const std::string& text) {
    errors.write("kelrun: " + text + "\n");
}

std::string seconds(Clock::duration time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", std::chrono::duration<double>(time).count());
    return text;
}

// All that went wrong on the line on which a run ended; the first is the cause of the others.
std::vector<Diagnostic> endOfRun(std::vector<Diagnostic> wrong) {
    if (wrong.empty()) return wrong;
    const Diagnostic last = wrong.back();
    std::erase_if(wrong, [&](const Diagnostic& one) {
        return one.line != last.line || one.file != last.file;
    });
    return wrong;
}

// A failure of a component, which the preprocessor does not list among its errors.
Diagnostic reasonOf(const com::Error& error, const ScriptPlace& place) {
    return {place.line > 0 ? place.file : std::string(), place.line, 0, true, describe(error)};
}

// A link that fails because its wait was interrupted has still been cancelled.
Ending runText(Session& session, const Preprocessor& preprocessor, const std::wstring& script) {
    try {
        const bool ran = session.run(script);
        if (session.wasCancelled()) return {ExitCode::kCancelled, {}};
        if (ran) return {ExitCode::kRan, {}};
        return {ExitCode::kFailed, endOfRun(preprocessor.lastRun())};
    } catch (const com::Error& error) {
        return {session.wasCancelled() ? ExitCode::kCancelled : ExitCode::kFailed,
                {reasonOf(error, session.place())}};
    }
}

// An error of the host script has cancelled the run.
Ending runScript(Session& session, const Preprocessor& preprocessor, const std::wstring& script,
                 HostScript* hostScript) {
    if (!hostScript) return runText(session, preprocessor, script);
    Ending ending{ExitCode::kFailed, {}};
    hostScript->runStarted();
    if (!hostScript->error()) ending = runText(session, preprocessor, script);
    hostScript->runEnded(ending.code == ExitCode::kRan);
    if (!hostScript->error()) return ending;
    if (ending.code == ExitCode::kCancelled) ending.code = ExitCode::kFailed;
    ending.reasons.insert(ending.reasons.begin(), *hostScript->error());
    return ending;
}

std::string endText(ExitCode code, const Options& options, const std::string& name,
                    Clock::duration time) {
    if (code == ExitCode::kCancelled) return name + " was cancelled after " + seconds(time);
    if (code == ExitCode::kRan) return name + " ran to its end (" + seconds(time) + ")";
    return name + " stopped on an error" +
           (options.hasInstrument() ? "" : " (neither --port nor --tcp was given)");
}

void printVariables(const Preprocessor& preprocessor, ConsoleOutput& errors) {
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    for (const NamedText& variable : preprocessor.variables())
        output.write(oneLine(variable.name) + '=' + oneLine(variable.value) + '\n');
    if (output.isBroken()) say(errors, "the variables could not be shown to their end");
}

Ending runConnected(const Task& task, const Trace& trace) {
    Session session(task.options, task.preprocessor, trace, task.log.transcript(), task.hostScript);
    const auto start = Clock::now();
    Ending ending = runScript(session, task.preprocessor, task.script.text, task.hostScript);
    ending.words = endText(ending.code, task.options, task.script.name, Clock::now() - start);
    if (task.hostScript && task.hostScript->error()) ending.code = ExitCode::kFailed;
    if (!session.finishDialogue()) say(task.errors, "the dialogue could not be shown to its end");
    return ending;
}

// A run that is not the recorded one has failed, also when the script has not noticed.
void closeTrace(Trace& trace, Ending& ending) {
    for (const std::string& word : trace.close()) {
        const bool isTold = std::ranges::any_of(ending.reasons, [&](const Diagnostic& reason) {
            return reason.message.find(word) != std::string::npos;
        });
        if (!isTold) ending.reasons.push_back({{}, 0, 0, true, word});
        if (ending.code == ExitCode::kRan) ending.code = ExitCode::kFailed;
    }
}

void tellReasons(const Task& task, const Ending& ending) {
    for (const Diagnostic& reason : ending.reasons) {
        if (reason.file.empty()) {
            say(task.errors, reason.message);
        } else {
            task.errors.write(task.writer.text(reason));
        }
    }
}

std::string shortWords(const Diagnostic& reason) {
    return reason.file.empty() ? reason.message : placeAndMessage(reason);
}

ExitCode runToEnd(const Task& task) {
    Trace trace(task.options);
    Ending ending = runConnected(task, trace);
    closeTrace(trace, ending);

    task.log.ended(ending.code,
                   ending.reasons.empty() ? ending.words : shortWords(ending.reasons.front()));
    if (task.options.printVariables) printVariables(task.preprocessor, task.errors);
    tellReasons(task, ending);
    if (ending.code != ExitCode::kRan || !task.options.quiet) say(task.errors, ending.words);
    if (ending.code == ExitCode::kFailed) {
        const std::string more = tellOfWarnings(task.found, ending.reasons);
        if (!more.empty()) say(task.errors, more);
    }
    return ending.code;
}

ExitCode runLogged(const Task& task) {
    try {
        return runToEnd(task);
    } catch (const Failure& failure) {
        task.log.ended(failure.code(), failure.what());
        throw;
    } catch (const com::Error& error) {
        task.log.ended(ExitCode::kFailed, describe(error));
        throw;
    } catch (const std::exception& error) {
        task.log.ended(ExitCode::kFailed, error.what());
        throw;
    }
}

// A script with errors.
ExitCode refuse(const Task& task, std::size_t count) {
    const std::string name = task.preprocessor.scriptName();
    for (const Diagnostic& one : task.found) {
        if (!one.isError || !task.log.transcript()) continue;
        task.log.transcript()->errorFound(name, one.line, one.column, hosts::toUtf16(one.message));
    }
    const std::string words = task.script.name + " was not started: it has " +
                              std::to_string(count) + (count == 1 ? " error" : " errors");
    task.log.ended(ExitCode::kFailed, words);
    say(task.errors, words + " (--keep-going runs it anyway)");
    if (const std::string more = tellOfWarnings(task.found, {}); !more.empty())
        say(task.errors, more);
    return ExitCode::kFailed;
}

// Where a host script prints before there is a dialogue: a check has the output for itself.
Print printBeforehand(const Options& options, ConsoleOutput& errors) {
    return [&](std::wstring_view text) {
        if (options.quiet) return;
        const std::u16string line(text.begin(), text.end());
        ConsoleOutput output(STD_OUTPUT_HANDLE);
        (options.check ? errors : output).write(DialogueText().next(line + u"\n"));
    };
}

}  // namespace

ExitCode run(const Options& options, ConsoleOutput& errors) {
    const ScriptFile script = readScript(options.script);
    if (!fitsCodePage(script.text)) {
        say(errors, script.name + " holds characters outside the user's code page; they are lost");
    }

    const com::Apartment apartment;
    const auto manifest = manifestBesideProgram();
    const Preprocessor preprocessor(options, script.folder);
    FindingWriter writer(script, options.script, preprocessor.scriptName());
    std::optional<HostScript> hostScript;
    try {
        if (!options.hostScript.empty()) {
            hostScript.emplace(options.hostScript, options.arguments, preprocessor.control(),
                               printBeforehand(options, errors));
        }
    } catch (const HostScriptFailure& failure) {
        errors.write(writer.text(failure.finding()));
        return failure.code();
    }
    const std::vector<Diagnostic> found = preprocessor.check(script.text);
    if (options.check) return showCheck(options, found, writer, errors);

    const std::size_t count = showErrors(found, writer, errors);
    RunLog log(options, preprocessor.scriptName(), script.text);
    const Task task{options, script, preprocessor, found, hostScript ? &*hostScript : nullptr,
                    writer,  log,    errors};
    const ExitCode code = count == 0 || options.keepGoing ? runLogged(task) : refuse(task, count);
    for (const std::string& one : log.incomplete())
        say(errors, "the " + one + " could not be written to its end");
    return code;
}

}  // namespace kel::kelrun
