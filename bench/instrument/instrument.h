#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bench/instrument/commands.h"
#include "bench/instrument/device.h"
#include "bench/instrument/line_output.h"

namespace kel::bench {

struct InstrumentOptions : DeviceOptions {
    bool asleep = false;
    bool silent = false;             // never says anything, also no echo
    Duration slow{0};                // added to every answer
    double garbleRate = 0;           // share of damaged bytes, 0 to 1
    std::uint32_t seed = 1;          // of the damage
    int troubleAfter = 0;            // answered commands; before, none of the three above
    std::optional<int> vanishAfter;  // answered commands; the line is then gone
    std::optional<int> failAfter;    // answered commands; all later ones are refused
};

// A field instrument behind a line, as a model: it does no input or output and has no clock.
// Its owner hands it what arrives, asks it for what is to be sent, and tells it the time, which
// never goes back. Not for use by several threads at once.
//
// On the line: received text is echoed, a carriage return (or line feed) as CR LF; an answer's
// lines end in CR LF; the prompt is '>'. Backspace and delete take the last character back.
// A break is a NUL byte, the form in which a receiver without break detection sees one. It drops
// what was typed and not yet sent, ends monitoring and sleep, and is answered by banner and prompt.
// Asleep, the instrument drops everything but a break and three line ends in a row.
class Instrument {
public:
    explicit Instrument(const InstrumentOptions& options);

    void feed(std::string_view bytes, Duration now);
    // The bytes that are to be sent by `now`.
    std::string take(Duration now);
    // When take() will next have something to do; nothing while only feed() can change that.
    std::optional<Duration> nextDue() const;

    // The peer has gone: drops a half typed line and what was not sent.
    void dropLine();

    bool asleep() const { return mode_ == Mode::kAsleep; }
    // All allowed commands have been answered and taken; the owner closes the line.
    bool vanished() const;

private:
    enum class Mode { kAwake, kStreaming, kAsleep, kWaking };

    void advance(Duration now);
    void receive(char byte, Duration now);
    void receiveAsleep(char byte, Duration now);
    void endLine(Duration now);
    void answer(const Answer& answer, Duration now);
    Duration answerDue(Duration now) const;
    bool isTroubled() const { return commandsToTrouble_ == 0; }
    void endStream(Duration now);
    void receiveBreak(Duration now);
    void wake(Duration now);
    void greet(Duration due);
    void say(std::string_view bytes, Duration due);
    std::optional<Duration> modeDue() const;

    Device device_;
    LineOutput output_;
    bool silent_;
    Duration slow_;
    double garbleRate_;
    int commandsToTrouble_;
    std::optional<int> commandsLeft_;
    std::optional<int> successesLeft_;
    Mode mode_;
    // What is sent line by line while streaming.
    AfterAnswer stream_ = AfterAnswer::kMonitor;
    // When waking ends or the next line of a stream is due.
    Duration modeDue_{0};
    Duration lastReceived_{0};
    std::string line_;
    bool lineTooLong_ = false;
    bool afterReturn_ = false;
    int lineEndsAsleep_ = 0;
};

}  // namespace kel::bench
