#pragma once
// Questions to the instrument, and its answers.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "bench/link/access/quiet_port.h"
#include "bench/link/clock.h"

namespace kel::bench {

// Thrown by a wait that is not to go on.
struct Aborted {};

// The instrument echoes a command, answers in lines and ends with its prompt. Times are in
// milliseconds of the link's clock. Nothing that came before a command is taken for its answer.
// Where no answer comes NoAnswer is thrown.
class Dialogue {
public:
    static constexpr long kTimeout = 5000;

    // `isAborted` is asked while an answer is awaited.
    explicit Dialogue(QuietPort& port, std::function<bool()> isAborted = {});

    // The answer, its lines with '\n' between them.
    std::string ask(std::string_view command, long timeout = kTimeout);

    // True for the answer OK.
    bool tell(std::string_view command, long timeout = kTimeout);

    // The bytes that follow the announcement of their number and checksum; nothing when they are
    // damaged, or the command was refused.
    std::optional<std::string> askForBlock(std::string_view command, long timeout = kTimeout);

    // Begins a stream of lines: what came of it after the OK. Nothing when it was refused.
    std::optional<std::string> beginStream(std::string_view command, long timeout = kTimeout);

    // Waits for the prompt that follows what is going on, and gives all that came before it.
    std::string finish(long timeout = kTimeout);

private:
    template <class Done>
    std::string exchange(std::string_view command, long timeout, Done&& done);
    template <class Done>
    std::string collect(long timeout, Done&& done);

    QuietPort& port_;
    std::function<bool()> isAborted_;
    Clock clock_;
};

}  // namespace kel::bench
