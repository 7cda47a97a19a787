#pragma once
// The engine's entry: runs and checks scripts.

#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "script/engine/diagnostic.h"
#include "script/engine/host.h"
#include "script/engine/observer.h"
#include "script/engine/reporter.h"
#include "script/engine/text_rules.h"
#include "script/engine/variables.h"

namespace kel::script {

// Runs scripts on one set of variables. Texts are in the user's code page. Everything happens on
// the caller's thread; host callbacks may call any member. An exception of the host or of a failed
// allocation passes through and leaves the session ready for the next run.
class Session {
public:
    // A script that runs itself would otherwise use up the stack.
    static constexpr std::size_t kMaximumDepth = 32;

    // All four must outlive the session.
    Session(Host& host, VariableStore& variables, const TextRules& rules, Observer& observer);

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Parses the whole text, and runs it when it parsed. False when an error, a cancel or a
    // handler ended it. `text` and `name` must stay unchanged during the call; `name` stands in
    // diagnostics and events only. A call from inside a run is a nested run: same variables and
    // cancel request, its own lines and conditions.
    bool run(std::string_view text, std::string_view name = {});

    // All mistakes that can be seen without running, in the order of the text. Changes nothing.
    std::vector<Diagnostic> check(std::string_view text, std::string_view name = {}) const;

    // Shows and records an error at the line that is running. Returns false, for use as result.
    bool report(std::string_view message, std::initializer_list<std::string_view> parts = {});

    // Of the last outermost run and the runs nested in it.
    const std::vector<Diagnostic>& diagnostics() const { return reporter_.diagnostics(); }

    // 0 while nothing runs.
    std::size_t depth() const { return reporter_.depth(); }

private:
    bool parseAndExecute(std::string_view text);
    void noteFailure();

    Host& host_;
    VariableStore& variables_;
    const TextRules& rules_;
    Observer& observer_;
    Characters characters_;
    Reporter reporter_;
};

}  // namespace kel::script
