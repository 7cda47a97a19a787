#pragma once
// What a host may watch while scripts run.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "script/engine/diagnostic.h"

namespace kel::script {

// Called on the thread of the run; an exception ends the run and passes through it.
class Observer {
public:
    virtual ~Observer() = default;

    // Encloses parsing and running; `depth` is 1 for an outermost script. Every start is followed
    // by its end, also when an exception ends the run.
    virtual void runStarted(std::string_view /*script*/, std::size_t /*depth*/) {}
    virtual void runEnded(std::string_view /*script*/, std::size_t /*depth*/, bool /*result*/) {}

    // A line is about to run; lines that a condition leaves out are not announced.
    virtual void lineStarted(std::size_t /*line*/) {}

    // Told by the host, which alone knows when the line is on its way.
    virtual void lineSent(std::string_view /*text*/) {}

    // A directive's handler is about to be called.
    virtual void directiveStarted(std::string_view /*name*/,
                                  std::span<const std::string> /*parameters*/) {}

    virtual void variableSet(std::string_view /*name*/, std::string_view /*value*/) {}

    // An error is about to be shown, or a run ends for a reason that is not shown.
    virtual void diagnosed(const Diagnostic& /*diagnostic*/) {}
};

}  // namespace kel::script
