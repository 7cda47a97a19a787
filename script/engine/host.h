#pragma once
// The outside world of a script: the instrument, the installed words, the user, the clock.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "script/engine/clock.h"
#include "script/engine/question.h"

namespace kel::script {

// What a handler of an installed word answered. A result of false ends the run, also when the
// word was not handled; otherwise an unhandled word goes to the next row of the same name.
struct DirectiveOutcome {
    bool handled = false;
    bool result = false;
};

struct FunctionOutcome {
    bool handled = false;
    bool result = false;
    std::string value;
};

// Called on the thread of the run. Every member may throw: the run ends, and the exception passes
// through `Session::run`. Every member that calls out may start another run of the same session.
// Views and spans are valid during the call only. A handler tells its own errors through
// `Session::report`, then gives a false result.
class Host : public Clock {
public:
    // Shows text to the user as if it came over the link.
    virtual void echo(std::string_view text) = 0;

    // Ends an error report: writes an empty text, so that the instrument gives a fresh prompt.
    virtual void endErrorReport() = 0;

    // Sends a finished line to the instrument; false ends the run. Once the line is on its way, and
    // before it waits for the instrument, the host tells `Observer::lineSent`.
    virtual bool send(std::string_view line) = 0;

    // Keeps the host's windows responsive; called before each line.
    virtual void yield() = 0;

    // Asked before each line, after `yield`.
    virtual bool cancelRequested() = 0;

    // Called when an outermost script has been parsed and starts to run.
    virtual void clearCancelRequest() = 0;

    // The first row at or after `from` of the installed directives that has the name, in any
    // letter case. Rows may be appended while a row's handler runs.
    virtual std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) = 0;
    virtual DirectiveOutcome callDirective(std::size_t row,
                                           std::span<const std::string> parameters) = 0;

    // The same for the installed functions.
    virtual std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) = 0;
    virtual FunctionOutcome callFunction(std::size_t row,
                                         std::span<const std::string> parameters) = 0;

    // Puts a question to the user, or answers it without one (`PreparedAnswers`).
    virtual Answers ask(const Question& question) = 0;

    // What the exception that is being handled tells the user; by default its own text.
    virtual std::string failureText();
};

}  // namespace kel::script
