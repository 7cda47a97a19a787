#pragma once
// Tells the sinks of a preprocessor what its runs do.

#include <string>
#include <vector>

#include "com/connection_point.h"
#include "script/engine/observer.h"

namespace kel::script {

class EventObserver final : public Observer {
public:
    // `events` must outlive the observer.
    explicit EventObserver(com::ConnectionPoint& events) : events_(events) {}

    void runStarted(std::string_view script, std::size_t depth) override;
    void runEnded(std::string_view script, std::size_t depth, bool result) override;
    void lineStarted(std::size_t line) override;
    void lineSent(std::string_view text) override;
    void directiveStarted(std::string_view name, std::span<const std::string> parameters) override;
    void variableSet(std::string_view name, std::string_view value) override;
    void diagnosed(const Diagnostic& diagnostic) override;

private:
    com::ConnectionPoint& events_;

    // The scripts that run, the innermost one last.
    std::vector<std::string> scripts_;
};

}  // namespace kel::script
