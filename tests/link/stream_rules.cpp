// What every stream answers: results, failures, closed ports, what it writes.
#include "com/variant.h"
#include "tests/link/kit.h"

namespace kel::conformance {
namespace {

void closesTwice(const Link& link) {
    const Wire wire = link.wire();
    expect(wire.isOpen(), "IsOpen to be true while it is connected", "it is false");
    expect(!wire.connection().empty(), "a ConnectionString while it is connected", "it is empty");
    for (int i = 0; i < 2; ++i) {
        succeeded(wire->Close(), "Close");
        expect(!wire.isOpen(), "IsOpen to be false after Close", "it is true");
    }
    succeeded(link.closedWire()->Close(), "Close before anything was opened");
}

// A member with a boolean result is false or fails; a failure has its reason.
void isFalseOrFails(HRESULT code, VARIANT_BOOL result, const std::string& call) {
    if (FAILED(code)) return failsWithReason(code, call);
    expect(!flag(result, call), call + " to be false on a closed port", "it is true");
}

void saysThatItIsClosed(const Link& link) {
    const Wire wire = link.closedWire();
    long count = 0;
    failsWithReason(wire->get_BytesInReadBuffer(&count), "BytesInReadBuffer");
    failsWithReason(wire->ClearReadBuffer(), "ClearReadBuffer");
    failsWithReason(wire->SendBreak(1), "SendBreak");

    const Bstr text(L"x");
    unsigned char byte = 0;
    com::Variant data;
    Bstr reading;
    VARIANT_BOOL result = VARIANT_FALSE;
    HRESULT code = wire->ReadByte(1, &byte, &result);
    isFalseOrFails(code, result, "ReadByte");
    code = wire->WriteByte('x', 1, &result);
    isFalseOrFails(code, result, "WriteByte");
    code = wire->ReadBuffer(1, 1, data.put(), &result);
    isFalseOrFails(code, result, "ReadBuffer");
    code = wire->WriteString(text.get(), VARIANT_TRUE, 1, &result);
    isFalseOrFails(code, result, "WriteString");
    code = wire->ReadString(1, reading.put(), &result);
    isFalseOrFails(code, result, "ReadString");
    code = wire->WaitForString(text.get(), 1, nullptr, reading.put(), &result);
    isFalseOrFails(code, result, "WaitForString");
}

void refusesNullPointers(const Link& link) {
    refusesNothing(link.closedWire().stream.Get(), link.kind() == Kind::kSerial
                                                       ? __uuidof(ISerialStream)
                                                       : __uuidof(INetworkStream));
}

// Hosts send 1 as well as -1; only -1 may come back.
void givesBooleans(const Link& link) {
    const Wire wire = link.closedWire();
    VARIANT_BOOL value = VARIANT_FALSE;
    expect(!wire.isOpen(), "IsOpen of a new stream to be false", "it is true");
    for (const VARIANT_BOOL wanted : {VARIANT_BOOL{1}, VARIANT_FALSE, VARIANT_TRUE}) {
        succeeded(wire->put_IdleProcessing(wanted), "putting IdleProcessing");
        succeeded(wire->get_IdleProcessing(&value), "IdleProcessing");
        expect(flag(value, "IdleProcessing") == com::isTrue(wanted),
               "IdleProcessing to read back " + std::to_string(wanted),
               "it is " + std::to_string(value));
    }
}

void writesBytesAsTheyAre(const Link& link) {
    constexpr std::wstring_view kWritten = L"written";
    constexpr long kQuiet = 300;
    const Wire wire = link.echoingWire();
    wire.sayAndAwaitEcho(kWritten);
    com::Variant data;
    VARIANT_BOOL result = VARIANT_FALSE;
    succeeded(wire->ReadBuffer(static_cast<long>(kWritten.size()), kPatience, data.put(), &result),
              "ReadBuffer");
    expect(flag(result, "ReadBuffer"), "ReadBuffer to be true", "it is false");
    auto reading = wire.waitFor(L">", kQuiet);
    expect(reading.text.empty(), "WriteString to add no line end that it is not told to add",
           "the other end answered " + shown(reading.text));

    succeeded(wire->WriteBuffer(data.get(), 0, &result), "WriteBuffer");
    expect(flag(result, "WriteBuffer"), "WriteBuffer to be true", "it is false");
    reading = wire.waitFor(kWritten, kPatience);
    expect(reading.found, "WriteBuffer to write " + shown(kWritten),
           "the echo is " + shown(reading.text));

    succeeded(wire->WriteByte('~', 0, &result), "WriteByte");
    expect(flag(result, "WriteByte"), "WriteByte to be true", "it is false");
    reading = wire.waitFor(L"~", kPatience);
    expect(reading.text == L"~", "WriteByte to write \"~\"", "the echo is " + shown(reading.text));

    wire.say(L"", true);
    reading = wire.waitFor(L">", kPatience);
    expect(reading.found, "WriteString to add the line end that it is told to add",
           "the other end answered " + shown(reading.text));
}

void appendsToItsLogFile(const Link& link) {
    const Wire wire = link.echoingWire();
    const TemporaryFile file;
    for (int i = 0; i < 2; ++i) {
        succeeded(wire->put_LogFile(file.name().get()), "putting LogFile");
        succeeded(wire->Echo(Bstr(L"not received").get()), "Echo");
        wire.expectEchoes("while a log is written");
        succeeded(wire->put_LogFile(nullptr), "putting no LogFile");
    }
    const std::string logged = file.content();
    expect(logged == "sign of lifesign of life", "what was received twice in the log file",
           "it holds " + shown(com::widen(logged)));
}

// Script languages reach members by their names and numbers.
void answersLateBoundCalls(const Link& link) {
    const Wire wire = link.closedWire();
    wchar_t name[] = L"IsOpen";
    wchar_t* names[] = {name};
    DISPID member = 0;
    succeeded(wire->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member),
              "GetIDsOfNames");
    expect(member == 2, "IsOpen to be member 2", "it is " + std::to_string(member));
    DISPPARAMS none{};
    com::Variant value;
    succeeded(wire->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                           value.put(), nullptr, nullptr),
              "Invoke");
    expect(value.type() == VT_BOOL && value.get().boolVal == VARIANT_FALSE,
           "a late-bound IsOpen to be false", "it is of type " + std::to_string(value.type()));
}

constexpr Rule kStreamRules[] = {
    {"Close closes, and does nothing to a closed port", Scope::kEachStream, closesTwice},
    {"members say that the port is closed", Scope::kEachStream, saysThatItIsClosed},
    {"null result pointers are E_POINTER", Scope::kEachStream, refusesNullPointers},
    {"boolean properties are 0 or -1, whatever was put", Scope::kEachStream, givesBooleans},
    {"what is written goes out as it is", Scope::kEachStream, writesBytesAsTheyAre},
    {"LogFile gets what is received, behind what it holds", Scope::kEachStream,
     appendsToItsLogFile},
    {"late-bound calls reach the members", Scope::kEachStream, answersLateBoundCalls},
};

}  // namespace

std::span<const Rule> streamRules() {
    return kStreamRules;
}

}  // namespace kel::conformance
