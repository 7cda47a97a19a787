// What is shown of what arrives.
#include "tests/link/kit.h"
#include "tests/link/pane.h"

namespace kel::conformance {
namespace {

constexpr std::wstring_view kEchoText = L"echoed once";

void takeByBytesInReadBuffer(IKelStream& stream) {
    long count = 0;
    succeeded(stream.get_BytesInReadBuffer(&count), "BytesInReadBuffer");
}

void takeByReadByte(IKelStream& stream) {
    unsigned char byte = 0;
    VARIANT_BOOL result = VARIANT_FALSE;
    succeeded(stream.ReadByte(0, &byte, &result), "ReadByte");
}

void takeByReadBuffer(IKelStream& stream) {
    VARIANT data;
    VariantInit(&data);
    VARIANT_BOOL result = VARIANT_FALSE;
    const HRESULT code = stream.ReadBuffer(4, 0, &data, &result);
    VariantClear(&data);
    succeeded(code, "ReadBuffer");
}

void takeByReadString(IKelStream& stream) {
    Bstr text;
    VARIANT_BOOL result = VARIANT_FALSE;
    succeeded(stream.ReadString(0, text.put(), &result), "ReadString");
}

void takeByWaitForString(IKelStream& stream) {
    Wire{&stream}.waitFor(L"never said", 0);
}

void takeBySleep(IKelStream& stream) {
    succeeded(stream.Sleep(1), "Sleep");
}

void takeByClearReadBuffer(IKelStream& stream) {
    succeeded(stream.ClearReadBuffer(), "ClearReadBuffer");
}

constexpr struct {
    const char* name;
    void (*take)(IKelStream&);
} kTakers[] = {{"BytesInReadBuffer", takeByBytesInReadBuffer},
               {"ReadByte", takeByReadByte},
               {"ReadBuffer", takeByReadBuffer},
               {"ReadString", takeByReadString},
               {"WaitForString", takeByWaitForString},
               {"Sleep", takeBySleep},
               {"ClearReadBuffer", takeByClearReadBuffer}};

void showsEachByteOnce(const Link& link) {
    const Wire wire = link.echoingWire();
    for (const auto& [name, take] : kTakers) {
        wire.settle();
        const EchoPane pane;
        succeeded(wire->put_EchoWindow(pane.number()), "putting EchoWindow");
        wire.say(kEchoText);
        for (const Watch watch; pane.text().size() < kEchoText.size();) {
            if (watch.patienceIsOver()) break;
            take(*wire.stream.Get());
        }
        // What was taken is shown by nobody else.
        if (pane.text() == kEchoText) {
            for (const auto& other : kTakers)
                other.take(*wire.stream.Get());
        }
        expect(pane.text() == kEchoText,
               std::string(name) + " to show what it takes, once: " + shown(kEchoText),
               "the echo window shows " + shown(pane.text()));
        succeeded(wire->put_EchoWindow(0), "putting EchoWindow");
    }
}

void showsOnTheCallersThread(const Link& link) {
    const Wire wire = link.echoingWire();
    const EchoPane pane;
    succeeded(wire->put_EchoWindow(pane.number()), "putting EchoWindow");
    wire.say(kEchoText);
    for (const Watch watch; pane.text().size() < kEchoText.size();) {
        if (watch.patienceIsOver()) break;
        succeeded(wire->Sleep(1), "Sleep");
        // What another thread sends gets through now.
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
    expect(!pane.isFedFromElsewhere(), "the echo on the thread that takes the bytes",
           "another thread sends it");
}

void showsNothingWithoutWindow(const Link& link) {
    const Wire wire = link.echoingWire();
    const EchoPane pane;
    succeeded(wire->put_EchoWindow(pane.number()), "putting EchoWindow");
    succeeded(wire->put_EchoWindow(0), "putting EchoWindow");
    wire.expectEchoes("while EchoWindow is 0");
    expect(pane.text().empty(), "nothing in a window that is not EchoWindow any more",
           "it shows " + shown(pane.text()));
}

void survivesItsWindow(const Link& link) {
    const Wire wire = link.echoingWire();
    {
        const EchoPane gone;
        succeeded(wire->put_EchoWindow(gone.number()), "putting EchoWindow");
    }
    wire.expectEchoes("after the death of the echo window");
    const EchoPane pane;
    succeeded(wire->put_EchoWindow(pane.number()), "putting EchoWindow");
    wire.expectEchoes("after the death of the echo window");
    expect(!pane.text().empty(), "an echo in the next window", "it shows nothing");
}

void remembersItsWindow(const Link& link) {
    const Wire wire = link.closedWire();
    const EchoPane pane;
    for (const long wanted : {pane.number(), 0L}) {
        long window = -1;
        succeeded(wire->put_EchoWindow(wanted), "putting EchoWindow");
        succeeded(wire->get_EchoWindow(&window), "EchoWindow");
        expect(window == wanted, "EchoWindow " + std::to_string(wanted),
               "it is " + std::to_string(window));
    }
}

void showsWhatItIsTold(const Link& link) {
    const Wire wire = link.wire();
    const EchoPane pane, info;
    succeeded(wire->put_EchoWindow(pane.number()), "putting EchoWindow");
    succeeded(wire->Echo(Bstr(kEchoText).get()), "Echo");
    expect(pane.text() == kEchoText, "Echo to show " + shown(kEchoText),
           "the window shows " + shown(pane.text()));
    succeeded(wire->put_EchoWindow(info.number()), "putting EchoWindow");
    succeeded(wire->EchoConnectionInfo(), "EchoConnectionInfo");
    expect(!info.text().empty(), "EchoConnectionInfo to show something", "it shows nothing");
}

constexpr Rule kEchoRules[] = {
    {"every received byte is echoed once, by whichever member takes it", Scope::kEachStream,
     showsEachByteOnce},
    {"the echo comes on the thread that takes the bytes", Scope::kEachStream,
     showsOnTheCallersThread},
    {"EchoWindow 0 shows nothing", Scope::kEachStream, showsNothingWithoutWindow},
    {"the stream survives the death of its echo window", Scope::kEachStream, survivesItsWindow},
    {"EchoWindow reads back", Scope::kEachStream, remembersItsWindow},
    {"Echo and EchoConnectionInfo show something", Scope::kEachStream, showsWhatItIsTold},
};

}  // namespace

std::span<const Rule> echoRules() {
    return kEchoRules;
}

}  // namespace kel::conformance
