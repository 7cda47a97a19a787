#include "tests/link/faults.h"

#include <atomic>
#include <thread>

#include "hosts/conformance/kit.h"

namespace kel::conformance {

void* replacedMember = nullptr;

namespace {

// Where members stand in the tables of IKelStream and what derives from it, and of
// IKelCommunicator.
enum Slot : unsigned {
    kClose = 7,
    kGetIsOpen,
    kReadByte,
    kWriteByte,
    kReadBuffer,
    kWriteBuffer,
    kWriteString,
    kReadString,
    kWaitForString,
    kClearReadBuffer = 17,
    kPutLogFile = 21,
    kGetEchoWindow,
    kPutEchoWindow,
    kEcho,
    kSleep = 26,
    kGetIdleProcessing,
    kBytesInReadBuffer = 32,
    kOpenPort,
    kPortExists,
    kConnectTo = 33,
    kSendCommand = 8,
    kCommunicatorWaitForString,
    kRunCommandFile = 11,
    kGetPort,
    kPutPort,
};

template <class... Arguments>
HRESULT proceed(void* object, Arguments... arguments) {
    using Member = HRESULT(STDMETHODCALLTYPE*)(void*, Arguments...);
    return reinterpret_cast<Member>(replacedMember)(object, arguments...);
}

STDMETHODIMP failsToClose(IKelStream* stream) {
    VARIANT_BOOL open = VARIANT_FALSE;
    stream->get_IsOpen(&open);
    return open ? proceed(stream) : E_UNEXPECTED;
}

STDMETHODIMP givesOne(IKelStream* stream, VARIANT_BOOL* value) {
    const HRESULT code = proceed(stream, value);
    if (value && *value) *value = 1;
    return code;
}

STDMETHODIMP doesNotCheckItsResult(IKelStream* stream, long timeout, unsigned char* byte,
                                   VARIANT_BOOL* result) {
    return byte && result ? proceed(stream, timeout, byte, result) : S_OK;
}

STDMETHODIMP hidesThatItIsClosed(IKelStream* stream) {
    proceed(stream);
    return S_OK;
}

STDMETHODIMP addsALineEnd(IKelStream* stream, BSTR text, VARIANT_BOOL, long timeout,
                          VARIANT_BOOL* result) {
    return proceed(stream, text, VARIANT_TRUE, timeout, result);
}

STDMETHODIMP addsNoLineEnd(IKelStream* stream, BSTR text, VARIANT_BOOL, long timeout,
                           VARIANT_BOOL* result) {
    return proceed(stream, text, VARIANT_FALSE, timeout, result);
}

STDMETHODIMP writesAnotherByte(IKelStream* stream, unsigned char, long timeout,
                               VARIANT_BOOL* result) {
    return proceed(stream, static_cast<unsigned char>('!'), timeout, result);
}

STDMETHODIMP ignoresText(IKelStream*, BSTR) {
    return S_OK;
}

STDMETHODIMP showsTwice(IKelStream* stream, long* count) {
    const HRESULT code = proceed(stream, count);
    if (SUCCEEDED(code) && *count > 0) stream->Echo(com::Bstr(L"x").get());
    return code;
}

STDMETHODIMP showsNothing(IKelStream* stream) {
    long window = 0;
    stream->get_EchoWindow(&window);
    stream->put_EchoWindow(0);
    const HRESULT code = proceed(stream);
    stream->put_EchoWindow(window);
    return code;
}

STDMETHODIMP staysWithItsWindow(IKelStream* stream, long window) {
    return window == 0 ? S_OK : proceed(stream, window);
}

STDMETHODIMP forgetsItsWindow(IKelStream*, long* window) {
    *window = 0;
    return S_OK;
}

STDMETHODIMP needsItsWindow(IKelStream* stream, BSTR text, long timeout, BSTR stop, BSTR* response,
                            VARIANT_BOOL* result) {
    long window = 0;
    stream->get_EchoWindow(&window);
    const HRESULT code = proceed(stream, text, timeout, stop, response, result);
    return window && !IsWindow(static_cast<HWND>(LongToHandle(window))) ? E_HANDLE : code;
}

STDMETHODIMP endsEarly(IKelStream* stream, BSTR text, long timeout, BSTR stop, BSTR* response,
                       VARIANT_BOOL* result) {
    return proceed(stream, text, timeout / 2, stop, response, result);
}

STDMETHODIMP endsLate(IKelStream* stream, long duration) {
    return proceed(stream, duration + 1500);
}

STDMETHODIMP failsAtItsEnd(IKelStream* stream, long timeout, BSTR* text, VARIANT_BOOL* result) {
    const HRESULT code = proceed(stream, timeout, text, result);
    return SUCCEEDED(code) && !*result ? E_FAIL : code;
}

STDMETHODIMP waitsForTheFirst(IKelStream* stream, long timeout, unsigned char* byte,
                              VARIANT_BOOL* result) {
    return proceed(stream, timeout + 400, byte, result);
}

STDMETHODIMP dropsWhatCame(IKelStream* stream, long count, long timeout, VARIANT* data,
                           VARIANT_BOOL* result) {
    const HRESULT code = proceed(stream, count, timeout, data, result);
    if (SUCCEEDED(code) && !*result) data->parray->rgsabound[0].cElements = 0;
    return code;
}

STDMETHODIMP knowsNoStop(IKelStream* stream, BSTR text, long timeout, BSTR, BSTR* response,
                         VARIANT_BOOL* result) {
    return proceed(stream, text, timeout, static_cast<BSTR>(nullptr), response, result);
}

STDMETHODIMP runsNoMessages(IKelStream*, long duration) {
    Sleep(static_cast<DWORD>(duration));
    return S_OK;
}

STDMETHODIMP runsAllMessages(IKelStream* stream, long duration) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
    return proceed(stream, duration);
}

STDMETHODIMP dropsTheConnection(INetworkStream* stream, BSTR address, BSTR port,
                                VARIANT_BOOL* result) {
    VARIANT_BOOL open = VARIANT_FALSE;
    if (result) stream->get_IsOpen(&open);
    if (open) stream->Close();
    return proceed(stream, address, port, result);
}

STDMETHODIMP keepsTheReason(ISerialStream* stream, BSTR port, long baudRate, VARIANT_BOOL* result) {
    const HRESULT code = proceed(stream, port, baudRate, result);
    SetLastError(ERROR_SUCCESS);
    return code;
}

STDMETHODIMP takesNoColon(ISerialStream* stream, BSTR port, long baudRate, VARIANT_BOOL* result) {
    const bool colon = com::view(port).ends_with(L':');
    return proceed(stream, colon ? static_cast<BSTR>(nullptr) : port, baudRate, result);
}

STDMETHODIMP knowsEveryPort(ISerialStream*, BSTR, VARIANT_BOOL* exists) {
    *exists = VARIANT_TRUE;
    return S_OK;
}

STDMETHODIMP keepsItsPort(IKelCommunicator* link, IKelStream* port) {
    return port ? proceed(link, port) : S_OK;
}

STDMETHODIMP countsTwice(IKelCommunicator* link, IKelStream** port) {
    const HRESULT code = proceed(link, port);
    if (port && *port) (*port)->AddRef();
    return code;
}

// Nothing more than a sign of life, so that no other rule minds it.
STDMETHODIMP echoesElsewhere(IKelStream* stream, long duration) {
    long window = 0;
    stream->get_EchoWindow(&window);
    if (window != 0) {
        std::atomic<bool> isDone = false;
        std::thread other([&] {
            DWORD_PTR result = 0;
            SendMessageTimeoutW(static_cast<HWND>(LongToHandle(window)), EM_REPLACESEL, FALSE,
                                reinterpret_cast<LPARAM>(L""), SMTO_NORMAL, 1000, &result);
            isDone = true;
        });
        while (!isDone) {
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
            Sleep(1);
        }
        other.join();
    }
    return proceed(stream, duration);
}

STDMETHODIMP believesInSuccess(IKelCommunicator* link, BSTR command, VARIANT_BOOL waits,
                               long timeout, VARIANT_BOOL* result) {
    const HRESULT code = proceed(link, command, waits, timeout, result);
    if (result) *result = VARIANT_TRUE;
    return code;
}

STDMETHODIMP waitsPastThePrompt(IKelCommunicator* link, BSTR text, long timeout, VARIANT_BOOL,
                                VARIANT_BOOL* result) {
    return proceed(link, text, timeout, VARIANT_FALSE, result);
}

STDMETHODIMP alwaysRan(IKelCommunicator* link, BSTR path, VARIANT_BOOL* result) {
    const HRESULT code = proceed(link, path, result);
    if (result) *result = VARIANT_TRUE;
    return code;
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

const Fault kFaults[] = {
    {Place::kSerial, kClose, address(failsToClose), "Close closes"},
    {Place::kNetwork, kGetIsOpen, address(givesOne), "Close closes"},
    {Place::kNetwork, kReadByte, address(doesNotCheckItsResult), "null result pointers"},
    {Place::kSerial, kClearReadBuffer, address(hidesThatItIsClosed), "members say"},
    {Place::kNetwork, kWriteString, address(addsALineEnd), "what is written"},
    {Place::kNetwork, kWriteString, address(addsNoLineEnd), "what is written"},
    {Place::kNetwork, kWriteByte, address(writesAnotherByte), "what is written"},
    {Place::kNetwork, kPutLogFile, address(ignoresText), "LogFile"},
    {Place::kNetwork, kBytesInReadBuffer, address(showsTwice), "every received byte"},
    {Place::kNetwork, kClearReadBuffer, address(showsNothing), "every received byte"},
    {Place::kNetwork, kPutEchoWindow, address(staysWithItsWindow), "EchoWindow 0"},
    {Place::kNetwork, kGetEchoWindow, address(forgetsItsWindow), "EchoWindow reads back"},
    {Place::kNetwork, kWaitForString, address(needsItsWindow), "the stream survives"},
    {Place::kNetwork, kSleep, address(echoesElsewhere), "the echo comes"},
    {Place::kNetwork, kEcho, address(ignoresText), "Echo and"},
    {Place::kNetwork, kWaitForString, address(endsEarly), "waits end"},
    {Place::kNetwork, kSleep, address(endsLate), "waits end"},
    {Place::kNetwork, kReadString, address(failsAtItsEnd), "waits end"},
    {Place::kNetwork, kReadByte, address(waitsForTheFirst), "a time-out of 0"},
    {Place::kNetwork, kReadBuffer, address(dropsWhatCame), "what came"},
    {Place::kNetwork, kWaitForString, address(knowsNoStop), "WaitForString ends"},
    {Place::kNetwork, kSleep, address(runsNoMessages), "waits run"},
    {Place::kNetwork, kSleep, address(runsAllMessages), "waits run"},
    {Place::kNetwork, kGetIdleProcessing, address(givesOne), "boolean properties"},
    {Place::kNetwork, kConnectTo, address(dropsTheConnection), "ConnectTo"},
    {Place::kSerial, kOpenPort, address(keepsTheReason), "OpenPort of"},
    {Place::kSerial, kOpenPort, address(takesNoColon), "OpenPort takes"},
    {Place::kSerial, kPortExists, address(knowsEveryPort), "PortExists"},
    {Place::kLink, kPutPort, address(keepsItsPort), "Port is"},
    {Place::kLink, kGetPort, address(countsTwice), "Port is"},
    {Place::kLink, kSendCommand, address(believesInSuccess), "SendCommand waits"},
    {Place::kLink, kCommunicatorWaitForString, address(waitsPastThePrompt), "WaitForString waits"},
    {Place::kLink, kRunCommandFile, address(alwaysRan), "RunCommandFile"},
};

}  // namespace

std::span<const Fault> faults() {
    return kFaults;
}

}  // namespace kel::conformance
