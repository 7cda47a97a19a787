#include "hosts/kelrun/run.h"

#include <chrono>
#include <cstdio>
#include <string>

#include "com/text.h"
#include "hosts/kelrun/error_text.h"
#include "hosts/kelrun/model/prologue.h"
#include "hosts/kelrun/script_file.h"
#include "hosts/kelrun/session.h"

namespace kel::kelrun {
namespace {

using Clock = std::chrono::steady_clock;

class Apartment {
public:
    Apartment() { com::check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

void say(ConsoleOutput& errors, const std::string& text) {
    errors.write("kelrun: " + text + "\n");
}

std::wstring prologueText(const Options& options) {
    std::wstring text = com::widen(prologue(options.variables), CP_UTF8);
    if (!fitsCodePage(text)) {
        throw Failure(ExitCode::kUsage, "--var: a character is not in the user's code page");
    }
    return text;
}

std::string seconds(Clock::duration time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", std::chrono::duration<double>(time).count());
    return text;
}

ExitCode runScript(Session& session, const std::wstring& prologue, const std::wstring& script) {
    const bool ran = (prologue.empty() || session.run(prologue)) && !session.wasCancelled() &&
                     session.run(script);
    if (session.wasCancelled()) return ExitCode::kCancelled;
    return ran ? ExitCode::kRan : ExitCode::kScriptFailed;
}

// A link that fails because its wait was interrupted has still been cancelled.
ExitCode runReportingFailure(Session& session, const std::wstring& prologue,
                             const std::wstring& script, ConsoleOutput& errors) {
    try {
        return runScript(session, prologue, script);
    } catch (const com::Error& error) {
        session.finishDialogue();
        say(errors, describe(error));
        return session.wasCancelled() ? ExitCode::kCancelled : ExitCode::kScriptFailed;
    }
}

std::string endText(ExitCode code, const Options& options, const std::string& name,
                    Clock::duration time) {
    if (code == ExitCode::kCancelled) return name + " was cancelled after " + seconds(time);
    if (code == ExitCode::kRan) return name + " ran to its end (" + seconds(time) + ")";
    const bool isConnected = !options.port.empty() || !options.tcp.empty();
    return name + " stopped on an error" +
           (isConnected ? "" : " (neither --port nor --tcp was given)");
}

}  // namespace

ExitCode run(const Options& options, ConsoleOutput& errors) {
    const ScriptFile script = readScript(options.script);
    const std::wstring prologue = prologueText(options);
    if (!fitsCodePage(script.text)) {
        say(errors, script.name + " holds characters outside the user's code page; they are lost");
    }

    const Apartment apartment;
    Session session(options, script.folder);
    const auto start = Clock::now();
    const ExitCode code = runReportingFailure(session, prologue, script.text, errors);
    const auto time = Clock::now() - start;

    if (!session.finishDialogue()) say(errors, "the dialogue could not be shown to its end");
    if (code != ExitCode::kRan || !options.quiet) {
        say(errors, endText(code, options, script.name, time));
    }
    return code;
}

}  // namespace kel::kelrun
