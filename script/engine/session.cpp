#include "script/engine/session.h"

#include "script/engine/checker.h"
#include "script/engine/executor.h"
#include "script/engine/parser.h"

namespace kel::script {
namespace {

// Shows the errors of a script that is to run; the first that fails it is enough.
class ErrorDisplay : public ParseListener {
public:
    explicit ErrorDisplay(Reporter& reporter) : reporter_(reporter) {}

    void lineSkipped(const SyntaxError& error) override { show(error); }

    bool failed(const SyntaxError& error) override {
        show(error);
        return false;
    }

    void textIgnored(std::string_view /*text*/) override {}

private:
    void show(const SyntaxError& error) {
        if (error.part) {
            reporter_.errorAt(error.where, error.message, {*error.part});
        } else {
            reporter_.errorAt(error.where, error.message);
        }
    }

    Reporter& reporter_;
};

}  // namespace

Session::Session(Host& host, VariableStore& variables, const TextRules& rules, Observer& observer)
    : host_(host),
      variables_(variables),
      rules_(rules),
      observer_(observer),
      characters_(rules),
      reporter_(host, observer) {}

bool Session::run(std::string_view text, std::string_view name) {
    if (depth() == kMaximumDepth) return report("Scripts are nested too deeply");
    const Reporter::Script script(reporter_, text, name);
    observer_.runStarted(name, depth());
    bool result = false;
    try {
        result = parseAndExecute(text);
    } catch (...) {
        noteFailure();
        observer_.runEnded(name, depth(), false);
        throw;
    }
    observer_.runEnded(name, depth(), result);
    return result;
}

bool Session::parseAndExecute(std::string_view text) {
    Program program(text);
    ErrorDisplay display(reporter_);
    if (!parseScript(text, characters_, program, display)) return false;
    if (depth() == 1) host_.clearCancelRequest();
    const Environment environment{host_, variables_, rules_, observer_, reporter_};
    return Executor(program, environment).run();
}

// Notes why the exception that is being handled ends the run. Where that fails too, the exception
// itself still tells.
void Session::noteFailure() {
    try {
        reporter_.note(host_.failureText());
    } catch (...) {
    }
}

std::vector<Diagnostic> Session::check(std::string_view text, std::string_view name) const {
    return checkScript(text, name, rules_, characters_, variables_, host_);
}

bool Session::report(std::string_view message, std::initializer_list<std::string_view> parts) {
    return reporter_.error(message, parts);
}

}  // namespace kel::script
