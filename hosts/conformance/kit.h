#pragma once
// What the rules are written with: their verdicts, the link that is checked, its other end.

#include <windows.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>

#include "com/error.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"

namespace kel::conformance {

using com::Bstr;
using com::ComPtr;

// Ends a rule that the link does not keep: what was expected, what happened.
struct Mend : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The other end does not answer as was promised.
struct Silent : Mend {
    using Mend::Mend;
};

// Ends a rule that cannot be tried; the text says why.
struct NotTried : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void expect(bool holds, const std::string& expected, const std::string& happened);

// Expects that a call on the link succeeds.
void succeeded(HRESULT code, const std::string& call);

// A code as programmers write it, such as 0x80004005.
std::string codeText(HRESULT code);

// The value of a boolean result, which has to be 0 or -1.
bool flag(VARIANT_BOOL value, const std::string& call);

// The bytes of an array that a call gave.
std::string bytesOf(const VARIANT& array, const std::string& call);

// A text in quotes, with escapes for what no line shows.
std::string shown(std::wstring_view text);

// A new file of no length, which goes at the end.
struct TemporaryFile {
    TemporaryFile();
    ~TemporaryFile() { DeleteFileW(path); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string content() const;
    void write(const char* text) const;

    wchar_t path[MAX_PATH];
};

// How long the other end may take for anything. In milliseconds, as all times here.
constexpr long kPatience = 3000;

class Watch {
public:
    long elapsed() const {
        const auto time = std::chrono::steady_clock::now() - start_;
        return static_cast<long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
    }
    bool patienceIsOver() const { return elapsed() > kPatience; }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// What is checked, and what stands at the other end.
struct Setup {
    CLSID communicator{};
    std::wstring serialPort;
    long baudRate = 9600;
    std::wstring host, port;
    bool echoing = false;
    std::wstring command = L"set station 1";
};

enum class Kind { kSerial, kNetwork };

// A stream, and what many rules do with it. What does not work ends the rule.
struct Wire {
    ComPtr<IKelStream> stream;

    IKelStream* operator->() const { return stream.Get(); }

    void say(std::wstring_view text, bool lineEnd = false) const;

    struct Reading {
        bool found;
        std::wstring text;
    };
    Reading waitFor(std::wstring_view text, long timeout, std::wstring_view stop = {}) const;

    // Ends a line that was begun, and leaves nothing to read. Throws Silent.
    void settle() const;

    // Expects that the other end still echoes.
    void expectEchoes(const std::string& when) const;
};

class Link {
public:
    Link(const Setup& setup, Kind kind) : setup_(setup), kind_(kind) {}

    const Setup& setup() const { return setup_; }
    Kind kind() const { return kind_; }

    ComPtr<IKelCommunicator> communicator() const;

    // The streams are closed ones.
    ComPtr<ISerialStream> serialStream() const;
    ComPtr<INetworkStream> networkStream() const;
    Wire closedWire() const;
    ComPtr<ICollection> collection() const;

    // A connected stream with nothing to read; not tried where nothing was named to connect to.
    Wire wire() const;

    // The same, whose other end echoes; not tried where none was promised.
    Wire echoingWire() const;

private:
    void connect(const Wire& wire) const;

    const Setup& setup_;
    Kind kind_;
    // One rule tells of a silent other end; for the rest that would be waiting and no news.
    mutable bool isSilent_ = false;
};

}  // namespace kel::conformance
