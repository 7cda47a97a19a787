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
    std::vector<std::string> reasons;
    std::string words = {};
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
std::vector<std::string> endOfRun(const std::vector<Diagnostic>& wrong) {
    std::vector<std::string> texts;
    for (const Diagnostic& one : wrong) {
        const Diagnostic& last = wrong.back();
        if (one.line == last.line && one.file == last.file) texts.push_back(placeAndMessage(one));
    }
    return texts;
}

// A failure of a component, which the preprocessor does not list among its errors.
std::string reasonOf(const com::Error& error, const ScriptPlace& place) {
    if (place.line == 0) return describe(error);
    return placeAndMessage({place.file, place.line, 0, true, describe(error)});
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
    ending.reasons.insert(ending.reasons.begin(), placeAndMessage(*hostScript->error()));
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

Ending runConnected(const Options& options, const ScriptFile& script,
                    const Preprocessor& preprocessor, const Trace& trace, Transcript* transcript,
                    HostScript* hostScript, ConsoleOutput& errors) {
    Session session(options, preprocessor, trace, transcript, hostScript);
    const auto start = Clock::now();
    Ending ending = runScript(session, preprocessor, script.text, hostScript);
    ending.words = endText(ending.code, options, script.name, Clock::now() - start);
    if (hostScript && hostScript->error()) ending.code = ExitCode::kFailed;
    if (!session.finishDialogue()) say(errors, "the dialogue could not be shown to its end");
    return ending;
}

// A run that is not the recorded one has failed, also when the script has not noticed.
void closeTrace(Trace& trace, Ending& ending) {
    for (const std::string& word : trace.close()) {
        const bool isTold = std::ranges::any_of(ending.reasons, [&](const std::string& reason) {
            return reason.find(word) != std::string::npos;
        });
        if (!isTold) ending.reasons.push_back(word);
        if (ending.code == ExitCode::kRan) ending.code = ExitCode::kFailed;
    }
}

ExitCode runToEnd(const Options& options, const ScriptFile& script,
                  const Preprocessor& preprocessor, RunLog& log, HostScript* hostScript,
                  ConsoleOutput& errors) {
    Trace trace(options);
    Ending ending =
        runConnected(options, script, preprocessor, trace, log.transcript(), hostScript, errors);
    closeTrace(trace, ending);

    log.ended(ending.code, ending.reasons.empty() ? ending.words : ending.reasons.front());
    if (options.printVariables) printVariables(preprocessor, errors);
    for (const std::string& reason : ending.reasons)
        say(errors, reason);
    if (ending.code != ExitCode::kRan || !options.quiet) say(errors, ending.words);
    return ending.code;
}

ExitCode runLogged(const Options& options, const ScriptFile& script,
                   const Preprocessor& preprocessor, RunLog& log, HostScript* hostScript,
                   ConsoleOutput& errors) {
    try {
        return runToEnd(options, script, preprocessor, log, hostScript, errors);
    } catch (const Failure& failure) {
        log.ended(failure.code(), failure.what());
        throw;
    } catch (const com::Error& error) {
        log.ended(ExitCode::kFailed, describe(error));
        throw;
    }
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

// A script with errors.
ExitCode refuse(const ScriptFile& script, const std::string& name,
                const std::vector<Diagnostic>& wrong, RunLog& log, ConsoleOutput& errors) {
    for (const Diagnostic& one : wrong) {
        if (!log.transcript()) break;
        log.transcript()->errorFound(name, one.line, one.column, hosts::toUtf16(one.message));
    }
    const std::string words = script.name + " was not started: it has " +
                              std::to_string(wrong.size()) +
                              (wrong.size() == 1 ? " error" : " errors");
    log.ended(ExitCode::kFailed, words);
    say(errors, words + " (--keep-going runs it anyway)");
    return ExitCode::kFailed;
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
    std::optional<HostScript> hostScript;
    if (!options.hostScript.empty()) {
        hostScript.emplace(options.hostScript, options.arguments, preprocessor.control(),
                           printBeforehand(options, errors));
    }
    if (options.check) return showCheck(options, script, preprocessor, errors);

    const std::vector<Diagnostic> wrong = showErrors(script, preprocessor, errors);
    const std::string name = preprocessor.scriptName();
    RunLog log(options, name, script.text);
    const ExitCode code = wrong.empty() || options.keepGoing
                              ? runLogged(options, script, preprocessor, log,
                                          hostScript ? &*hostScript : nullptr, errors)
                              : refuse(script, name, wrong, log, errors);
    for (const std::string& one : log.incomplete())
        say(errors, "the " + one + " could not be written to its end");
    return code;
}

}  // namespace kel::kelrun
