// Tests the rules: puts faults into a link that keeps them all, one after the other, and expects
// the rule of each to find it.
#include <winsock2.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>
#include <tuple>

#include "com/module.h"
#include "hosts/conformance/check.h"
#include "hosts/conformance/kit.h"

namespace {

using namespace kel;
using namespace kel::conformance;

enum class Place { kSerial, kNetwork, kLink };

// A fault that a link may have: a function takes the place of a member.
struct Fault {
    Place place;
    const char* rule;  // how the name of the rule that is to find it begins
    unsigned slot;     // of the member in the table of virtual functions
    void* function;
};

// What the fault of the moment stands in for, and calls.
void* replacedMember = nullptr;

template <class... Arguments>
HRESULT proceed(void* object, Arguments... arguments) {
    using Member = HRESULT(STDMETHODCALLTYPE*)(void*, Arguments...);
    return reinterpret_cast<Member>(replacedMember)(object, arguments...);
}

template <class Function, class Interface, class... Arguments>
HRESULT STDMETHODCALLTYPE standIn(Interface* object, Arguments... arguments) {
    return Function()(object, arguments...);
}

template <class Interface, class... Arguments, class Function>
Fault fault(Place place, const char* rule,
            HRESULT (STDMETHODCALLTYPE Interface::*member)(Arguments...), Function) {
    // A pointer to a virtual member holds its place in the table, in bytes, and one.
    std::uintptr_t bytes = 0;
    std::memcpy(&bytes, &member, sizeof bytes);
    const auto slot = static_cast<unsigned>((bytes - 1) / sizeof(void*));
    return {place, rule, slot,
            reinterpret_cast<void*>(&standIn<Function, Interface, Arguments...>)};
}

long windowOf(IKelStream* stream) {
    long window = 0;
    stream->get_EchoWindow(&window);
    return window;
}

HWND handleOf(long window) {
    return static_cast<HWND>(LongToHandle(window));
}

constexpr auto givesOne = [](IKelStream* stream, VARIANT_BOOL* value) {
    const HRESULT code = proceed(stream, value);
    if (value && *value) *value = 1;
    return code;
};
constexpr auto ignoresText = [](IKelStream*, BSTR) { return S_OK; };
constexpr auto alwaysSucceeds = [](IKelCommunicator* link, auto... arguments) {
    const HRESULT code = proceed(link, arguments...);
    VARIANT_BOOL* const result = std::get<sizeof...(arguments) - 1>(std::tuple(arguments...));
    if (result) *result = VARIANT_TRUE;
    return code;
};

const Fault kFaults[] = {
    // Closes only what is open.
    fault(Place::kSerial, "Close closes", &IKelStream::Close,
          [](IKelStream* stream) {
              VARIANT_BOOL open = VARIANT_FALSE;
              stream->get_IsOpen(&open);
              return open ? proceed(stream) : E_UNEXPECTED;
          }),
    fault(Place::kNetwork, "Close closes", &IKelStream::get_IsOpen, givesOne),
    // Does not check its result.
    fault(Place::kNetwork, "null result pointers", &IKelStream::ReadByte,
          [](IKelStream* stream, long timeout, unsigned char* byte, VARIANT_BOOL* result) {
              return byte && result ? proceed(stream, timeout, byte, result) : S_OK;
          }),
    // Hides that it is closed.
    fault(Place::kSerial, "members say", &IKelStream::ClearReadBuffer,
          [](IKelStream* stream) {
              proceed(stream);
              return S_OK;
          }),
    // Adds a line end, or none, whatever is asked for.
    fault(Place::kNetwork, "what is written", &IKelStream::WriteString,
          [](IKelStream* stream, BSTR text, VARIANT_BOOL, auto... rest) {
              return proceed(stream, text, VARIANT_TRUE, rest...);
          }),
    fault(Place::kNetwork, "what is written", &IKelStream::WriteString,
          [](IKelStream* stream, BSTR text, VARIANT_BOOL, auto... rest) {
              return proceed(stream, text, VARIANT_FALSE, rest...);
          }),
    // Writes another byte.
    fault(Place::kNetwork, "what is written", &IKelStream::WriteByte,
          [](IKelStream* stream, unsigned char, auto... rest) {
              return proceed(stream, static_cast<unsigned char>('!'), rest...);
          }),
    fault(Place::kNetwork, "LogFile", &IKelStream::put_LogFile, ignoresText),
    // Shows more, or less.
    fault(Place::kNetwork, "every received byte", &IKelStream::get_BytesInReadBuffer,
          [](IKelStream* stream, long* count) {
              const HRESULT code = proceed(stream, count);
              if (SUCCEEDED(code) && *count > 0) stream->Echo(com::Bstr(L"x").get());
              return code;
          }),
    fault(Place::kNetwork, "every received byte", &IKelStream::ClearReadBuffer,
          [](IKelStream* stream) {
              const long window = windowOf(stream);
              stream->put_EchoWindow(0);
              const HRESULT code = proceed(stream);
              stream->put_EchoWindow(window);
              return code;
          }),
    // Stays with its window, forgets it, needs it.
    fault(Place::kNetwork, "EchoWindow 0", &IKelStream::put_EchoWindow,
          [](IKelStream* stream, long window) {
              return window == 0 ? S_OK : proceed(stream, window);
          }),
    fault(Place::kNetwork, "EchoWindow reads back", &IKelStream::get_EchoWindow,
          [](IKelStream*, long* window) {
              *window = 0;
              return S_OK;
          }),
    fault(Place::kNetwork, "the stream survives", &IKelStream::WaitForString,
          [](IKelStream* stream, auto... arguments) {
              const long window = windowOf(stream);
              const HRESULT code = proceed(stream, arguments...);
              return window && !IsWindow(handleOf(window)) ? E_HANDLE : code;
          }),
    // Echoes in another thread: nothing more than a sign of life, so that no other rule minds it.
    fault(Place::kNetwork, "the echo comes", &IKelStream::Sleep,
          [](IKelStream* stream, long duration) {
              if (const long window = windowOf(stream)) {
                  std::atomic<bool> isDone = false;
                  std::thread other([&] {
                      DWORD_PTR result = 0;
                      SendMessageTimeoutW(handleOf(window), EM_REPLACESEL, FALSE,
                                          reinterpret_cast<LPARAM>(L""), SMTO_NORMAL, 1000,
                                          &result);
                      isDone = true;
                  });
                  while (!isDone) {
                      MSG message;
                      PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
                      ::Sleep(1);
                  }
                  other.join();
              }
              return proceed(stream, duration);
          }),
    fault(Place::kNetwork, "Echo and", &IKelStream::Echo, ignoresText),
    // Ends early, ends late, fails at its end, waits for the first byte.
    fault(Place::kNetwork, "waits end", &IKelStream::WaitForString,
          [](IKelStream* stream, BSTR text, long timeout, auto... rest) {
              return proceed(stream, text, timeout / 2, rest...);
          }),
    fault(Place::kNetwork, "waits end", &IKelStream::Sleep,
          [](IKelStream* stream, long duration) { return proceed(stream, duration + 1500); }),
    fault(Place::kNetwork, "waits end", &IKelStream::ReadString,
          [](IKelStream* stream, long timeout, BSTR* text, VARIANT_BOOL* result) {
              const HRESULT code = proceed(stream, timeout, text, result);
              return SUCCEEDED(code) && !*result ? E_FAIL : code;
          }),
    fault(Place::kNetwork, "a time-out of 0", &IKelStream::ReadByte,
          [](IKelStream* stream, long timeout, auto... rest) {
              return proceed(stream, timeout + 400, rest...);
          }),
    // Drops what came too late.
    fault(Place::kNetwork, "what came", &IKelStream::ReadBuffer,
          [](IKelStream* stream, long count, long timeout, VARIANT* data, VARIANT_BOOL* result) {
              const HRESULT code = proceed(stream, count, timeout, data, result);
              if (SUCCEEDED(code) && !*result) data->parray->rgsabound[0].cElements = 0;
              return code;
          }),
    // Knows no text to stop at.
    fault(Place::kNetwork, "WaitForString ends", &IKelStream::WaitForString,
          [](IKelStream* stream, BSTR text, long timeout, BSTR, auto... rest) {
              return proceed(stream, text, timeout, static_cast<BSTR>(nullptr), rest...);
          }),
    // Runs no messages, or all of them.
    fault(Place::kNetwork, "waits run", &IKelStream::Sleep,
          [](IKelStream*, long duration) {
              ::Sleep(static_cast<DWORD>(duration));
              return S_OK;
          }),
    fault(Place::kNetwork, "waits run", &IKelStream::Sleep,
          [](IKelStream* stream, long duration) {
              MSG message;
              while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                  DispatchMessageW(&message);
              return proceed(stream, duration);
          }),
    fault(Place::kNetwork, "boolean properties", &IKelStream::get_IdleProcessing, givesOne),
    // Drops the connection that is there.
    fault(Place::kNetwork, "ConnectTo", &INetworkStream::ConnectTo,
          [](INetworkStream* stream, BSTR address, BSTR port, VARIANT_BOOL* result) {
              VARIANT_BOOL open = VARIANT_FALSE;
              if (result) stream->get_IsOpen(&open);
              if (open) stream->Close();
              return proceed(stream, address, port, result);
          }),
    // Keeps the reason to itself.
    fault(Place::kSerial, "OpenPort of", &ISerialStream::OpenPort,
          [](ISerialStream* stream, auto... arguments) {
              const HRESULT code = proceed(stream, arguments...);
              SetLastError(ERROR_SUCCESS);
              return code;
          }),
    // Takes no colon.
    fault(Place::kSerial, "OpenPort takes", &ISerialStream::OpenPort,
          [](ISerialStream* stream, BSTR port, auto... rest) {
              const bool colon = com::view(port).ends_with(L':');
              return proceed(stream, colon ? static_cast<BSTR>(nullptr) : port, rest...);
          }),
    // Knows every port.
    fault(Place::kSerial, "PortExists", &ISerialStream::PortExists,
          [](ISerialStream*, BSTR, VARIANT_BOOL* exists) {
              *exists = VARIANT_TRUE;
              return S_OK;
          }),
    // Keeps its port, and counts a reference too many.
    fault(
        Place::kLink, "Port is", &IKelCommunicator::put_Port,
        [](IKelCommunicator* link, IKelStream* port) { return port ? proceed(link, port) : S_OK; }),
    fault(Place::kLink, "Port is", &IKelCommunicator::get_Port,
          [](IKelCommunicator* link, IKelStream** port) {
              const HRESULT code = proceed(link, port);
              if (port && *port) (*port)->AddRef();
              return code;
          }),
    fault(Place::kLink, "SendCommand waits", &IKelCommunicator::SendCommand, alwaysSucceeds),
    // Waits past the prompt.
    fault(Place::kLink, "WaitForString waits", &IKelCommunicator::WaitForString,
          [](IKelCommunicator* link, BSTR text, long timeout, VARIANT_BOOL, VARIANT_BOOL* result) {
              return proceed(link, text, timeout, VARIANT_FALSE, result);
          }),
    fault(Place::kLink, "RunCommandFile", &IKelCommunicator::RunCommandFile, alwaysSucceeds),
};

void* replaceMember(IUnknown* object, unsigned slot, void* member) {
    void** place = *reinterpret_cast<void***>(object) + slot;
    DWORD before = 0;
    if (!VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before)) throw com::lastError();
    void* replaced = *place;
    *place = member;
    VirtualProtect(place, sizeof *place, before, &before);
    return replaced;
}

const Rule& ruleNamed(std::string_view beginning) {
    const auto found = std::ranges::find_if(
        rules(), [&](const Rule& rule) { return rule.name.starts_with(beginning); });
    if (found != rules().end()) return *found;
    throw std::runtime_error("there is no rule " + std::string(beginning));
}

// What the rule of a fault says about it.
Verdict find(const Fault& fault, const Setup& setup) {
    const Link link(setup, fault.place == Place::kSerial ? Kind::kSerial : Kind::kNetwork);
    ComPtr<IUnknown> object = link.closedWire().stream;
    if (fault.place == Place::kLink) object = link.communicator();
    replacedMember = replaceMember(object.Get(), fault.slot, fault.function);
    const Verdict verdict = check(ruleNamed(fault.rule), link);
    replaceMember(object.Get(), fault.slot, replacedMember);
    return verdict;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    WSADATA sockets;
    Setup setup;
    if (count != 5 || FAILED(OleInitialize(nullptr)) || WSAStartup(MAKEWORD(2, 2), &sockets) != 0 ||
        FAILED(CLSIDFromProgID(arguments[1], &setup.communicator))) {
        std::fputs("usage: kel_link_faults PROGID SERIAL-PORT HOST PORT\n", stderr);
        return 2;
    }
    com::attachModule(GetModuleHandleW(nullptr));
    setup.serialPort = arguments[2];
    setup.host = arguments[3];
    setup.port = arguments[4];
    setup.echoing = true;
    int missed = 0;
    for (const Fault& fault : kFaults) {
        const Verdict verdict = find(fault, setup);
        const bool found = verdict.kind == Verdict::Kind::kToMend;
        missed += !found;
        std::printf("%s: %s: %s\n", found ? "found" : "MISSED", fault.rule, verdict.text.c_str());
        std::fflush(stdout);
    }
    com::detachModule();
    WSACleanup();
    OleUninitialize();
    return missed > 0;
}
