#pragma once
// The one way in which errors of scripts are told.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine/diagnostic.h"
#include "script/engine/host.h"
#include "script/engine/locator.h"
#include "script/engine/observer.h"

namespace kel::script {

// Shows errors on the host and keeps the diagnostics, with their places in the running script.
class Reporter {
public:
    Reporter(Host& host, Observer& observer) : host_(host), observer_(observer) {}

    // Makes a script the one that runs, for the life of the object.
    class Script {
    public:
        Script(Reporter& reporter, std::string_view text, std::string_view name);
        ~Script();

        Script(const Script&) = delete;
        Script& operator=(const Script&) = delete;

    private:
        friend class Reporter;

        Reporter& reporter_;
        Script* const outer_;
        const std::string_view name_;
        Locator locator_;
        const char* here_;
    };

    // Notes where the running script is; `where` points into its text.
    void moveTo(const char* where) { running_->here_ = where; }

    // The number of the line that `moveTo` named last.
    std::size_t line() { return running_->locator_.locate(running_->here_).line; }

    // Shows and records an error. Returns false, the result of the step that failed.
    bool errorAt(const char* where, std::string_view message,
                 std::initializer_list<std::string_view> parts = {});

    // The same at the place noted last.
    bool error(std::string_view message, std::initializer_list<std::string_view> parts = {});

    // Records, without showing it, why the running script ends. Returns false.
    bool note(std::string message);

    // The same, unless something was told since `count` gave `countBefore`.
    bool noteUnlessReported(std::size_t countBefore, std::string message);

    // Counts all errors and notes ever told.
    std::size_t count() const { return count_; }

    const std::vector<Diagnostic>& diagnostics() const { return diagnostics_; }
    std::size_t depth() const { return depth_; }

private:
    void record(const char* where, std::string message);

    Host& host_;
    Observer& observer_;
    Script* running_ = nullptr;
    std::size_t depth_ = 0;
    std::size_t count_ = 0;
    std::vector<Diagnostic> diagnostics_;
};

}  // namespace kel::script
