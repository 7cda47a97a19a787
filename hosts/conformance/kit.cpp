#include "hosts/conformance/kit.h"

#include <cstdio>

#include "com/variant.h"
#include "interfaces/link_classes.h"

namespace kel::conformance {
namespace {

constexpr std::wstring_view kPrompt = L">";
// How long an instrument may go on speaking after its prompt.
constexpr long kQuietTime = 100;

// What a failing call published, which is taken away.
std::wstring takeReason() {
    ComPtr<IErrorInfo> info;
    Bstr description;
    if (GetErrorInfo(0, &info) == S_OK) info->GetDescription(description.put());
    return std::wstring(description.view());
}

template <class Interface>
ComPtr<Interface> createObject(const CLSID& identifier, const char* what) {
    ComPtr<Interface> object;
    const HRESULT code =
        CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
    expect(SUCCEEDED(code), std::string("a new ") + what, codeText(code));
    return object;
}

}  // namespace

void expect(bool holds, const std::string& expected, const std::string& happened) {
    if (!holds) throw Mend("expected " + expected + ", but " + happened);
}

std::string codeText(HRESULT code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(code));
    return text;
}

void succeeded(HRESULT code, const std::string& call) {
    if (SUCCEEDED(code)) return;
    throw Mend("expected " + call + " to succeed, but it failed with " + codeText(code) + " " +
               shown(takeReason()));
}

bool flag(VARIANT_BOOL value, const std::string& call) {
    expect(value == VARIANT_TRUE || value == VARIANT_FALSE, "0 or -1 from " + call,
           "it answered " + std::to_string(value));
    return value == VARIANT_TRUE;
}

std::string bytesOf(const VARIANT& array, const std::string& call) {
    expect(array.vt == (VT_ARRAY | VT_UI1), call + " to give an array of bytes",
           "it gave a value of type " + std::to_string(array.vt));
    long first = 0, last = -1;
    void* data = nullptr;
    com::check(SafeArrayGetLBound(array.parray, 1, &first));
    com::check(SafeArrayGetUBound(array.parray, 1, &last));
    com::check(SafeArrayAccessData(array.parray, &data));
    std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(last - first + 1));
    SafeArrayUnaccessData(array.parray);
    return bytes;
}

std::string shown(std::wstring_view text) {
    std::string line = "\"";
    for (const char character : com::narrow(text)) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(character));
        if (character < ' ' && character >= 0) {
            line += character == '\r' ? "\\r" : character == '\n' ? "\\n" : escape;
        } else {
            line += character;
        }
    }
    return line + "\"";
}

TemporaryFile::TemporaryFile() {
    wchar_t folder[MAX_PATH];
    if (!GetTempPathW(MAX_PATH, folder) || !GetTempFileNameW(folder, L"kel", 0, path)) {
        throw NotTried("no file could be made in the folder for temporary files");
    }
}

std::string TemporaryFile::content() const {
    char bytes[100] = {};
    FILE* file = _wfopen(path, L"rb");
    const std::size_t count = file ? std::fread(bytes, 1, sizeof bytes, file) : 0;
    if (file) std::fclose(file);
    return {bytes, count};
}

void TemporaryFile::write(const char* text) const {
    FILE* file = _wfopen(path, L"wb");
    if (!file) throw NotTried("no file could be written");
    std::fputs(text, file);
    std::fclose(file);
}

void Wire::say(std::wstring_view text, bool lineEnd) const {
    VARIANT_BOOL written = VARIANT_FALSE;
    succeeded(stream->WriteString(Bstr(text).get(), com::variantBool(lineEnd), kPatience, &written),
              "WriteString");
    expect(flag(written, "WriteString"), "WriteString to be true", "it was false");
}

Wire::Reading Wire::waitFor(std::wstring_view text, long timeout, std::wstring_view stop) const {
    Bstr response;
    VARIANT_BOOL found = VARIANT_FALSE;
    succeeded(
        stream->WaitForString(Bstr(text).get(), timeout, Bstr(stop).get(), response.put(), &found),
        "WaitForString");
    return {flag(found, "WaitForString"), std::wstring(response.view())};
}

void Wire::settle() const {
    succeeded(stream->ClearReadBuffer(), "ClearReadBuffer");
    say(L"", true);
    const Reading reading = waitFor(kPrompt, kPatience);
    if (!reading.found) {
        throw Silent("expected the prompt " + shown(kPrompt) + " of the other end, but came " +
                     shown(reading.text));
    }
    succeeded(stream->Sleep(kQuietTime), "Sleep");
    succeeded(stream->ClearReadBuffer(), "ClearReadBuffer");
}

void Wire::expectEchoes(const std::string& when) const {
    constexpr std::wstring_view kSign = L"sign of life";
    say(kSign);
    const Reading reading = waitFor(kSign, kPatience);
    expect(reading.found, "the echo " + shown(kSign) + " " + when, "came " + shown(reading.text));
}

ComPtr<IKelCommunicator> Link::communicator() const {
    return createObject<IKelCommunicator>(setup_.communicator, "communicator");
}

ComPtr<ISerialStream> Link::serialStream() const {
    return createObject<ISerialStream>(link::kSerialStreamClass, "serial stream");
}

ComPtr<INetworkStream> Link::networkStream() const {
    return createObject<INetworkStream>(link::kNetworkStreamClass, "network stream");
}

ComPtr<ICollection> Link::collection() const {
    return createObject<ICollection>(link::kCollectionClass, "collection");
}

Wire Link::closedWire() const {
    if (kind_ == Kind::kSerial) return {serialStream()};
    return {networkStream()};
}

Wire Link::wire() const {
    if (isSilent_) throw NotTried("the other end does not answer");
    const Wire wire = closedWire();
    connect(wire);
    if (!setup_.echoing) {
        succeeded(wire->ClearReadBuffer(), "ClearReadBuffer");
        return wire;
    }
    try {
        wire.settle();
    } catch (const Silent&) {
        isSilent_ = true;
        throw;
    }
    return wire;
}

Wire Link::echoingWire() const {
    if (!setup_.echoing) throw NotTried("no other end that echoes was promised (--echoing)");
    return wire();
}

void Link::connect(const Wire& wire) const {
    VARIANT_BOOL open = VARIANT_FALSE;
    if (kind_ == Kind::kSerial) {
        if (setup_.serialPort.empty()) throw NotTried("no serial port was named (--serial)");
        ComPtr<ISerialStream> serial;
        succeeded(wire.stream.As(&serial), "QueryInterface");
        succeeded(serial->OpenPort(Bstr(std::wstring_view(setup_.serialPort)).get(),
                                   setup_.baudRate, &open),
                  "OpenPort");
    } else {
        if (setup_.host.empty()) throw NotTried("no network address was named (--network)");
        ComPtr<INetworkStream> network;
        succeeded(wire.stream.As(&network), "QueryInterface");
        succeeded(network->ConnectTo(Bstr(std::wstring_view(setup_.host)).get(),
                                     Bstr(std::wstring_view(setup_.port)).get(), &open),
                  "ConnectTo");
    }
    const DWORD error = GetLastError();
    expect(flag(open, "connecting"), "a connection",
           "none was made, last error " + std::to_string(error));
}

}  // namespace kel::conformance
