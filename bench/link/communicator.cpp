#include "bench/link/communicator.h"

#include <optional>
#include <string>

#include "bench/link/access/recorder_access.h"
#include "bench/link/script_file.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::bench {
namespace {

constexpr std::wstring_view kPrompt = L">";
constexpr std::wstring_view kOk = L"OK";
constexpr int kWakeUpAttempts = 3;
constexpr long kWakeUpBreak = 300;
constexpr long kWakeUpTimeout = 2000;
// How long an instrument may go on speaking after its prompt, or between its OK and its prompt.
constexpr long kSettleTime = 100;

// What came until `text`; nothing when it did not come.
std::optional<std::wstring> waitFor(IKelStream* port, std::wstring_view text, long timeout,
                                    std::wstring_view stopText) {
    com::Bstr response;
    VARIANT_BOOL found = VARIANT_FALSE;
    com::check(port->WaitForString(com::Bstr(text).get(), timeout, com::Bstr(stopText).get(),
                                   response.put(), &found),
               port);
    if (!com::isTrue(found)) return std::nullopt;
    return std::wstring(response.view());
}

// An instrument echoes what it is sent: the OK in the name TOKYO is no answer.
bool endsInEcho(std::wstring_view received, std::wstring_view command) {
    for (std::size_t at = command.find(kOk); at != command.npos; at = command.find(kOk, at + 1)) {
        if (received.ends_with(command.substr(0, at + kOk.size()))) return true;
    }
    return false;
}

// False when a call on the port failed because the connection is gone; other failures are thrown.
bool worked(HRESULT code, IKelStream* port) {
    if (SUCCEEDED(code)) return true;
    VARIANT_BOOL open = VARIANT_FALSE;
    const bool gone = SUCCEEDED(port->get_IsOpen(&open)) && !com::isTrue(open);
    if (!gone) com::check(code, port);
    return false;
}

bool wakeUp(IKelStream* port) {
    for (int attempt = 0; attempt < kWakeUpAttempts; ++attempt) {
        if (!worked(port->ClearReadBuffer(), port)) return false;
        if (!worked(port->SendBreak(kWakeUpBreak), port)) return false;
        if (!waitFor(port, kPrompt, kWakeUpTimeout, {})) continue;
        // Where the line carries both forms of a break, the instrument answers twice.
        com::check(port->Sleep(kSettleTime), port);
        return worked(port->ClearReadBuffer(), port);
    }
    return false;
}

}  // namespace

HRESULT Communicator::findElsewhere(REFIID iid, void** result) {
    return iid == __uuidof(IRecorderAccess) ? recorderOf(this, recorder_, result) : E_NOINTERFACE;
}

HRESULT Communicator::WakeUpInstrument(VARIANT_BOOL* result) {
    return operation([&] {
        com::out(result) = VARIANT_FALSE;
        const com::ComPtr<IKelStream> port = port_;
        if (port) *result = com::variantBool(wakeUp(port.Get()));
    });
}

HRESULT Communicator::SendCommand(BSTR command, VARIANT_BOOL waitForOk, long timeout,
                                  VARIANT_BOOL* result) {
    return operation([&] {
        com::out(result) = VARIANT_FALSE;
        if (timeout < 0) throw com::Error(E_INVALIDARG, L"A time-out is negative");
        const com::ComPtr<IKelStream> port = port_;
        if (!port || !send(port.Get(), com::view(command))) return;
        const bool done = !com::isTrue(waitForOk) ||
                          waitForAnswer(port.Get(), com::view(command), clock_.after(timeout));
        *result = com::variantBool(done);
    });
}

bool Communicator::send(IKelStream* port, std::wstring_view command) {
    if (!worked(port->ClearReadBuffer(), port)) return false;
    const com::Bstr line(command);
    // In SDI-12 form a command brings its own end.
    if (sdi12Mode_) CharUpperBuffW(line.get(), SysStringLen(line.get()));
    VARIANT_BOOL sent = VARIANT_FALSE;
    com::check(port->WriteString(line.get(), com::variantBool(!sdi12Mode_), 0, &sent), port);
    return com::isTrue(sent);
}

bool Communicator::waitForAnswer(IKelStream* port, std::wstring_view command,
                                 Clock::Moment deadline) {
    std::wstring received;
    do {
        const auto more = waitFor(port, kOk, clock_.until(deadline), kPrompt);
        if (!more) return false;
        received += *more;
    } while (endsInEcho(received, command));
    waitFor(port, kPrompt, kSettleTime, {});
    return true;
}

HRESULT Communicator::WaitForString(BSTR text, long timeout, VARIANT_BOOL stopOnPrompt,
                                    VARIANT_BOOL* result) {
    return operation([&] {
        com::out(result) = VARIANT_FALSE;
        const com::ComPtr<IKelStream> port = port_;
        const auto stopText = com::isTrue(stopOnPrompt) ? kPrompt : std::wstring_view();
        if (!port) return;
        *result =
            com::variantBool(waitFor(port.Get(), com::view(text), timeout, stopText).has_value());
    });
}

HRESULT Communicator::SendBreak(long duration) {
    return operation([&] {
        const com::ComPtr<IKelStream> port = port_;
        if (!port) throw com::Error(E_FAIL, L"The link has no port");
        com::check(port->SendBreak(duration), port);
    });
}

HRESULT Communicator::RunCommandFile(BSTR path, VARIANT_BOOL* result) {
    return operation([&] {
        com::out(result) = VARIANT_FALSE;
        const com::ComPtr<IPreprocessor> preprocessor = preprocessor_;
        if (!preprocessor) throw com::Error(E_FAIL, L"The link has no preprocessor");
        const com::Bstr script(readScriptFile(std::wstring(com::view(path))));
        com::check(preprocessor->PreprocessAndRun(script.get(), result), preprocessor);
    });
}

HRESULT Communicator::get_Port(IKelStream** stream) {
    return operation([&] {
        com::out(stream) = nullptr;
        port_.CopyTo(stream);
    });
}

HRESULT Communicator::put_Port(IKelStream* stream) {
    return operation([&] { port_ = stream; });
}

HRESULT Communicator::get_Preprocessor(IPreprocessor** preprocessor) {
    return operation([&] {
        com::out(preprocessor) = nullptr;
        preprocessor_.CopyTo(preprocessor);
    });
}

HRESULT Communicator::put_Preprocessor(IPreprocessor* preprocessor) {
    return operation([&] { preprocessor_ = preprocessor; });
}

HRESULT Communicator::get_FastConnection(VARIANT_BOOL* fast) {
    return operation([&] { com::out(fast) = com::variantBool(fastConnection_); });
}

HRESULT Communicator::put_FastConnection(VARIANT_BOOL fast) {
    return operation([&] { fastConnection_ = com::isTrue(fast); });
}

HRESULT Communicator::get_RadioConnection(VARIANT_BOOL* radio) {
    return operation([&] { com::out(radio) = com::variantBool(radioConnection_); });
}

HRESULT Communicator::put_RadioConnection(VARIANT_BOOL radio) {
    return operation([&] { radioConnection_ = com::isTrue(radio); });
}

HRESULT Communicator::get_RS485Address(long* address) {
    return operation([&] { com::out(address) = rs485Address_; });
}

HRESULT Communicator::put_RS485Address(long address) {
    return operation([&] { rs485Address_ = address; });
}

HRESULT Communicator::get_SDI12Mode(VARIANT_BOOL* enabled) {
    return operation([&] { com::out(enabled) = com::variantBool(sdi12Mode_); });
}

HRESULT Communicator::put_SDI12Mode(VARIANT_BOOL enabled) {
    return operation([&] { sdi12Mode_ = com::isTrue(enabled); });
}

HRESULT Communicator::CreatePacket(IBinaryPacket** packet) {
    return guarded<IBinaryCommunicator>([&] {
        com::out(packet) = nullptr;
        throw com::Error(E_NOTIMPL);
    });
}

HRESULT Communicator::SendPacket(IBinaryPacket*, long, VARIANT_BOOL* result) {
    return guarded<IBinaryCommunicator>([&] {
        com::out(result) = VARIANT_FALSE;
        throw com::Error(E_NOTIMPL);
    });
}

HRESULT Communicator::ReceivePacket(long, IBinaryPacket** packet) {
    return guarded<IBinaryCommunicator>([&] {
        com::out(packet) = nullptr;
        throw com::Error(E_NOTIMPL);
    });
}

}  // namespace kel::bench
