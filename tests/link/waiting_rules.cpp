// How long members wait, what they answer then, and what goes on meanwhile.
#include "com/variant.h"
#include "tests/link/kit.h"
#include "tests/link/pane.h"

namespace kel::conformance {
namespace {

constexpr long kWait = 200;
// The platform's clock may end a wait a little early.
constexpr long kEarly = 20;
constexpr long kLate = 1000;
constexpr long kAtOnce = 250;
constexpr std::wstring_view kNeverSaid = L"never said";
constexpr std::wstring_view kText = L"abcdefgh";

bool waitByReadByte(IKelStream& stream, long timeout) {
    unsigned char byte = 0;
    VARIANT_BOOL result = VARIANT_TRUE;
    succeeded(stream.ReadByte(timeout, &byte, &result), "ReadByte");
    return flag(result, "ReadByte");
}

bool waitByReadBuffer(IKelStream& stream, long timeout) {
    com::Variant data;
    VARIANT_BOOL result = VARIANT_TRUE;
    succeeded(stream.ReadBuffer(1, timeout, data.put(), &result), "ReadBuffer");
    return flag(result, "ReadBuffer");
}

bool waitByReadString(IKelStream& stream, long timeout) {
    Bstr text;
    VARIANT_BOOL result = VARIANT_TRUE;
    succeeded(stream.ReadString(timeout, text.put(), &result), "ReadString");
    return flag(result, "ReadString");
}

bool waitByWaitForString(IKelStream& stream, long timeout) {
    return Wire{&stream}.waitFor(kNeverSaid, timeout).found;
}

bool waitBySleep(IKelStream& stream, long timeout) {
    succeeded(stream.Sleep(timeout), "Sleep");
    return false;
}

constexpr struct {
    const char* name;
    bool (*wait)(IKelStream&, long);
} kWaits[] = {{"ReadByte", waitByReadByte},
              {"ReadBuffer", waitByReadBuffer},
              {"ReadString", waitByReadString},
              {"WaitForString", waitByWaitForString},
              {"Sleep", waitBySleep}};

void endsByItsTimeout(const Link& link) {
    const Wire wire = link.wire();
    for (const auto& [name, wait] : kWaits) {
        const Watch watch;
        const bool result = wait(*wire.stream.Get(), kWait);
        const long time = watch.elapsed();
        expect(!result, std::string(name) + " to be false when nothing comes", "it is true");
        expect(time >= kWait - kEarly && time <= kWait + kLate,
               std::string(name) + " to end after " + std::to_string(kWait) + " ms",
               "it took " + std::to_string(time) + " ms");
    }
}

void returnsAtOnce(const Link& link) {
    const Wire wire = link.wire();
    for (const auto& [name, wait] : kWaits) {
        const Watch watch;
        const bool result = wait(*wire.stream.Get(), 0);
        const long time = watch.elapsed();
        expect(!result, std::string(name) + " to be false when nothing has come", "it is true");
        expect(time <= kAtOnce, std::string(name) + " to return at once",
               "it took " + std::to_string(time) + " ms");
    }
}

void givesWhatCame(const Link& link) {
    const Wire wire = link.echoingWire();
    VARIANT_BOOL result = VARIANT_TRUE;
    wire.sayAndAwaitEcho(kText);
    com::Variant data;
    succeeded(wire->ReadBuffer(100, kWait, data.put(), &result), "ReadBuffer");
    const std::wstring bytes = com::widen(bytesOf(data.get(), "ReadBuffer"));
    expect(!flag(result, "ReadBuffer") && bytes == kText,
           "ReadBuffer to be false with " + shown(kText), "it gave " + shown(bytes));

    wire.sayAndAwaitEcho(kText);
    Bstr line;
    succeeded(wire->ReadString(kWait, line.put(), &result), "ReadString");
    expect(!flag(result, "ReadString") && line.view() == kText,
           "ReadString to be false with " + shown(kText), "it gave " + shown(line.view()));
}

void losesNothing(const Link& link) {
    const Wire wire = link.echoingWire();
    const struct {
        std::wstring_view text, stop;
        bool found;
    } rows[] = {{L"cd", L"", true}, {L"cd", L"fg", true}, {kNeverSaid, L"cd", false}};
    for (const auto& row : rows) {
        wire.sayAndAwaitEcho(kText);
        const Watch watch;
        const auto reading = wire.waitFor(row.text, kPatience, row.stop);
        const std::string call = "WaitForString " + shown(row.text) + " or " + shown(row.stop);
        expect(reading.found == row.found, call + (row.found ? " to be true" : " to be false"),
               "it is not");
        expect(!watch.patienceIsOver() && watch.elapsed() < kPatience - kLate,
               call + " to end with the text that came", "it went on to its time-out");
        const auto rest = wire.waitFor(kNeverSaid, kWait);
        expect(reading.text.starts_with(L"abcd") && reading.text + rest.text == kText,
               call + " to give what it reads and leave the rest of " + shown(kText),
               "it gave " + shown(reading.text) + " and left " + shown(rest.text));
    }
}

void runsTheMessageLoop(const Link& link) {
    const Wire wire = link.wire();
    for (const bool enabled : {true, false}) {
        succeeded(wire->put_IdleProcessing(com::variantBool(enabled)), "putting IdleProcessing");
        for (const auto& [name, wait] : kWaits) {
            const PostedMessage message;
            wait(*wire.stream.Get(), kWait);
            expect(message.arrived() == enabled,
                   std::string(name) + (enabled ? " to run the message loop"
                                                : " to run no message loop without IdleProcessing"),
                   enabled ? "a posted message did not arrive" : "a posted message arrived");
        }
    }
}

constexpr Rule kWaitingRules[] = {
    {"waits end by their time-out, with false and no failure", Scope::kEachStream,
     endsByItsTimeout},
    {"a time-out of 0 returns at once", Scope::kEachStream, returnsAtOnce},
    {"what came before the time-out is given", Scope::kEachStream, givesWhatCame},
    {"WaitForString ends with either text and loses nothing", Scope::kEachStream, losesNothing},
    {"waits run the message loop with IdleProcessing, and only then", Scope::kEachStream,
     runsTheMessageLoop},
};

}  // namespace

std::span<const Rule> waitingRules() {
    return kWaitingRules;
}

}  // namespace kel::conformance
