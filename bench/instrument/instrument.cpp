#include "bench/instrument/instrument.h"

#include <algorithm>
#include <utility>

#include "bench/instrument/text.h"

namespace kel::bench {

namespace {

constexpr char kBreak = '\0';
constexpr std::string_view kPrompt = ">";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kLongestLine = 256;
constexpr int kLineEndsThatWake = 3;
constexpr Duration kWakeTime = std::chrono::milliseconds{300};

std::string onTheLine(std::string_view text) {
    std::string bytes;
    for (const char character : text) {
        if (character == '\n') bytes += '\r';
        bytes += character;
    }
    return bytes.append(kLineEnd);
}

}  // namespace

Instrument::Instrument(const InstrumentOptions& options)
    : device_(options),
      output_(options.seed),
      silent_(options.silent),
      slow_(options.slow),
      garbleRate_(options.garbleRate),
      commandsToTrouble_(options.troubleAfter),
      commandsLeft_(options.vanishAfter),
      successesLeft_(options.failAfter),
      mode_(options.asleep ? Mode::kAsleep : Mode::kAwake) {}

void Instrument::feed(std::string_view bytes, Duration now) {
    advance(now);
    lastReceived_ = now;
    for (const char byte : bytes)
        receive(byte, now);
}

std::string Instrument::take(Duration now) {
    advance(now);
    return output_.take(now);
}

std::optional<Duration> Instrument::nextDue() const {
    const auto mode = modeDue();
    const auto output = output_.nextDue();
    if (!mode || !output) return mode ? mode : output;
    return std::min(*mode, *output);
}

void Instrument::dropLine() {
    output_.clear();
    line_.clear();
    lineTooLong_ = false;
    afterReturn_ = false;
}

bool Instrument::vanished() const {
    return commandsLeft_ == 0 && !output_.nextDue();
}

// When the instrument will do something of its own accord.
std::optional<Duration> Instrument::modeDue() const {
    if (mode_ == Mode::kWaking || mode_ == Mode::kStreaming) return modeDue_;
    const auto timeout = device_.setup().number("timeout");
    if (mode_ == Mode::kAsleep || timeout == 0) return std::nullopt;
    return lastReceived_ + std::chrono::seconds{static_cast<long long>(timeout)};
}

void Instrument::advance(Duration now) {
    for (auto due = modeDue(); due && *due <= now; due = modeDue()) {
        switch (mode_) {
            case Mode::kWaking:
                mode_ = Mode::kAwake;
                lastReceived_ = *due;
                greet(*due);
                break;
            case Mode::kStreaming:
                say(onTheLine(streamLine(device_, stream_, *due)), *due);
                modeDue_ += streamInterval(stream_);
                break;
            case Mode::kAwake:
            case Mode::kAsleep:
                mode_ = Mode::kAsleep;
                line_.clear();
                break;
        }
    }
}

void Instrument::receive(char byte, Duration now) {
    if (commandsLeft_ == 0 || mode_ == Mode::kWaking) return;
    const bool secondOfPair = byte == '\n' && afterReturn_;
    afterReturn_ = byte == '\r';
    if (secondOfPair) return;

    if (mode_ == Mode::kAsleep) return receiveAsleep(byte, now);
    if (byte == kBreak) return receiveBreak(now);
    if (byte == '\r' || byte == '\n') return endLine(now);
    if (mode_ == Mode::kStreaming) return;

    if (byte == '\b' || byte == '\x7f') {
        if (line_.empty()) return;
        line_.pop_back();
        return say("\b \b", now);
    }
    const bool control = static_cast<unsigned char>(byte) < ' ' && byte != '\t';
    if (control) return;
    say({&byte, 1}, now);
    if (line_.size() == kLongestLine) {
        lineTooLong_ = true;
        return;
    }
    line_.push_back(byte);
}

void Instrument::receiveAsleep(char byte, Duration now) {
    const bool lineEnd = byte == '\r' || byte == '\n';
    lineEndsAsleep_ = lineEnd ? lineEndsAsleep_ + 1 : 0;
    if (byte == kBreak || lineEndsAsleep_ == kLineEndsThatWake) wake(now);
}

void Instrument::endLine(Duration now) {
    if (mode_ == Mode::kStreaming) {
        endStream(now);
        return say(std::string(kLineEnd).append(kPrompt), now);
    }
    say(kLineEnd, now);
    if (lineTooLong_) {
        answer({"ERROR: line too long"}, now);
    } else if (trim(line_).empty()) {
        say(kPrompt, answerDue(now));
    } else if (successesLeft_ == 0) {
        answer({"ERROR: out of order"}, now);
    } else {
        if (successesLeft_) --*successesLeft_;
        answer(execute(device_, line_, now), now);
    }
    line_.clear();
    lineTooLong_ = false;
}

void Instrument::answer(const Answer& answer, Duration now) {
    const auto due = answerDue(now) + answer.takes;
    auto bytes = onTheLine(answer.text);
    if (!answer.data.empty()) bytes.append(answer.data).append(kLineEnd);
    switch (answer.then) {
        case AfterAnswer::kPrompt:
            bytes += kPrompt;
            break;
        case AfterAnswer::kSleep:
            mode_ = Mode::kAsleep;
            lineEndsAsleep_ = 0;
            break;
        case AfterAnswer::kMonitor:
        case AfterAnswer::kCollect:
        case AfterAnswer::kCalibrate:
            mode_ = Mode::kStreaming;
            stream_ = answer.then;
            modeDue_ = due + streamInterval(stream_);
            device_.sensors().start(due);
            break;
    }
    say(bytes, due);
    if (commandsLeft_) --*commandsLeft_;
    if (commandsToTrouble_ > 0) --commandsToTrouble_;
}

// Answers come one after the other, each as slow as asked for.
Duration Instrument::answerDue(Duration now) const {
    const auto due = std::max(now, output_.lastDue().value_or(now));
    return isTroubled() ? due + slow_ : due;
}

void Instrument::endStream(Duration now) {
    mode_ = Mode::kAwake;
    if (stream_ == AfterAnswer::kCalibrate) device_.sensors().endCalibration(now);
}

void Instrument::receiveBreak(Duration now) {
    dropLine();
    device_.card().cancel(now);
    if (mode_ == Mode::kStreaming) endStream(now);
    mode_ = Mode::kAwake;
    greet(now);
}

void Instrument::wake(Duration now) {
    mode_ = Mode::kWaking;
    modeDue_ = now + kWakeTime;
    lineEndsAsleep_ = 0;
}

void Instrument::greet(Duration due) {
    say(std::string(kLineEnd) + onTheLine(identity()).append(kPrompt), due);
}

void Instrument::say(std::string_view bytes, Duration due) {
    if (silent_ && isTroubled()) return;
    output_.push(bytes, due, isTroubled() ? garbleRate_ : 0);
}

}  // namespace kel::bench
