#pragma once
// A host that does anything a host may do, as its input tells, and watches that the engine keeps
// its promises.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine/session.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {

// What the host throws; passes through the engine.
struct HostFailure {};

class AnyHost final : public script::Host, public script::Observer {
public:
    // `script` is what pieces are cut from. Every choice takes one byte of `choices`; when they
    // are used up all goes well.
    AnyHost(std::string_view script, script::VariableStore& variables,
            const script::TextRules& rules)
        : script_(script),
          variables_(variables),
          rules_(rules),
          session_(*this, variables, rules, *this) {}

    // Runs the script with all that happens on the way. Returns everything the host has seen.
    std::string drive(std::string_view choices);

    void echo(std::string_view text) override;
    void endErrorReport() override { mayFail(); }
    bool send(std::string_view line) override;
    void yield() override;
    bool cancelRequested() override;
    void clearCancelRequest() override { mayFail(); }
    std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) override;
    script::DirectiveOutcome callDirective(std::size_t row,
                                           std::span<const std::string> parameters) override;
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) override;
    script::FunctionOutcome callFunction(std::size_t row,
                                         std::span<const std::string> parameters) override;
    script::Answers ask(const script::Question& question) override;
    script::LocalTime localTime() override { return {}; }

    void runStarted(std::string_view name, std::size_t depth) override;
    void runEnded(std::string_view name, std::size_t depth, bool result) override;
    void lineStarted(std::size_t line) override;
    void directiveStarted(std::string_view name, std::span<const std::string> parameters) override;
    void variableSet(std::string_view name, std::string_view value) override;
    void diagnosed(const script::Diagnostic& diagnostic) override;

private:
    // A script that runs.
    struct Run {
        std::vector<std::string> lines;
        std::size_t lastLine = 0;
        std::size_t callsLeft = 0;
        bool isExecuting = false;
        bool isOver = false;  // something has failed in it
    };

    unsigned choose(unsigned count);
    std::string_view piece();

    void step();
    bool outcome(bool result);
    void mayFail();
    void meddle();
    bool run(std::string_view script);
    void check(std::string_view script);
    std::optional<std::size_t> find(std::string_view name, std::size_t from);
    script::Answers prepared(const script::Question& question);
    void see(std::string_view kind, std::string_view text);

    std::string_view script_;
    script::VariableStore& variables_;
    const script::TextRules& rules_;
    script::Session session_;

    std::string_view choices_;
    std::string seen_;
    std::vector<Run> runs_;
    std::string_view startingText_;
    std::size_t nestedRuns_ = 0;
    std::size_t errors_ = 0;
    bool isChecking_ = false;
    // Kept, since the engine drops what is thrown while it notes a failure.
    bool isMisplaced_ = false;
    bool lastResult_ = false;
};

}  // namespace kel::fuzz
