#pragma once
// The engine's view of the outside: the instrument link, the installed words, the user.

#include <string>

#include "interfaces/KelUtils.h"
#include "script/engine/host.h"
#include "script/interviewer.h"
#include "script/run_state.h"
#include "script/word_handler.h"

namespace kel::script {

// Carries out on the link of the running script what the engine asks. A failing call on the link or
// on a handler throws com::Error.
class LinkHost final : public Host {
public:
    // `report` tells an error of the running script. All must outlive the host.
    LinkHost(RunState& state, IPreprocessor2& sink, const WordHandlers& directives,
             const WordHandlers& functions, Interviewer& interviewer, ErrorReport report);

    void echo(std::string_view text) override;
    void endErrorReport() override;
    bool send(std::string_view line) override;
    void yield() override;
    bool cancelRequested() override;
    void clearCancelRequest() override;
    std::optional<std::size_t> findDirective(std::string_view name, std::size_t from) override;
    DirectiveOutcome callDirective(std::size_t row,
                                   std::span<const std::string> parameters) override;
    std::optional<std::size_t> findFunction(std::string_view name, std::size_t from) override;
    FunctionOutcome callFunction(std::size_t row, std::span<const std::string> parameters) override;
    Answers ask(const Question& question) override;
    LocalTime localTime() override;
    std::string failureText() override;

private:
    com::ComPtr<IFlatCollection> collect(std::span<const std::string> parameters);

    RunState& state_;
    IPreprocessor2& sink_;
    const WordHandlers& directives_;
    const WordHandlers& functions_;
    Interviewer& interviewer_;
    ErrorReport report_;
};

}  // namespace kel::script
