#pragma once
// The wrappers of the link's streams.

#include "com/text.h"
#include "com/variant.h"
#include "hosts/trace/echo_relay.h"
#include "hosts/trace/edit_control.h"
#include "hosts/trace/traced.h"

namespace kel::trace {

// What all streams have. Not compared in a replay: what a terminal asks and does in every tick of
// its timer (IsOpen, BytesInReadBuffer, ClearReadBuffer), what a status line shows
// (ConnectionString), and the echo window, whose handle differs from run to run.
template <class Derived, class Interface, class... Bases>
class StreamWrapper : public Traced<Derived, Interface, Bases...> {
    using Base = Traced<Derived, Interface, Bases...>;

public:
    using Base::Base;

    ~StreamWrapper() override {
        // Nobody may find it any more while the link is called once again.
        this->session().objects().remove(*this);
        giveEchoBack();
    }

    STDMETHODIMP Close() override { return call<&IKelStream::Close>("Close"); }
    STDMETHODIMP get_IsOpen(VARIANT_BOOL* open) override {
        return call<&IKelStream::get_IsOpen, Treatment::kState>("get_IsOpen", open);
    }
    STDMETHODIMP ReadByte(long timeout, unsigned char* byte, VARIANT_BOOL* result) override {
        return call<&IKelStream::ReadByte>("ReadByte", timeout, byte, result);
    }
    STDMETHODIMP WriteByte(unsigned char byte, long timeout, VARIANT_BOOL* result) override {
        return call<&IKelStream::WriteByte>("WriteByte", byte, timeout, result);
    }
    STDMETHODIMP ReadBuffer(long count, long timeout, VARIANT* data,
                            VARIANT_BOOL* result) override {
        return call<&IKelStream::ReadBuffer>("ReadBuffer", count, timeout, data, result);
    }
    STDMETHODIMP WriteBuffer(VARIANT data, long timeout, VARIANT_BOOL* result) override {
        return call<&IKelStream::WriteBuffer>("WriteBuffer", data, timeout, result);
    }
    STDMETHODIMP WriteString(BSTR text, VARIANT_BOOL lineEnd, long timeout,
                             VARIANT_BOOL* result) override {
        return call<&IKelStream::WriteString>("WriteString", text, lineEnd, timeout, result);
    }
    STDMETHODIMP ReadString(long timeout, BSTR* text, VARIANT_BOOL* result) override {
        return call<&IKelStream::ReadString>("ReadString", timeout, text, result);
    }
    STDMETHODIMP WaitForString(BSTR text, long timeout, BSTR stopText, BSTR* response,
                               VARIANT_BOOL* result) override {
        return call<&IKelStream::WaitForString>("WaitForString", text, timeout, stopText, response,
                                                result);
    }
    STDMETHODIMP SendBreak(long duration) override {
        return call<&IKelStream::SendBreak>("SendBreak", duration);
    }
    STDMETHODIMP ClearReadBuffer() override {
        return call<&IKelStream::ClearReadBuffer, Treatment::kPolled>("ClearReadBuffer");
    }
    STDMETHODIMP get_BaudRate(long* rate) override {
        return call<&IKelStream::get_BaudRate>("get_BaudRate", rate);
    }
    STDMETHODIMP put_BaudRate(long rate) override {
        return call<&IKelStream::put_BaudRate>("put_BaudRate", rate);
    }
    STDMETHODIMP get_LogFile(BSTR* path) override {
        return call<&IKelStream::get_LogFile>("get_LogFile", path);
    }
    STDMETHODIMP put_LogFile(BSTR path) override {
        return call<&IKelStream::put_LogFile>("put_LogFile", path);
    }
    STDMETHODIMP Echo(BSTR text) override { return call<&IKelStream::Echo>("Echo", text); }
    STDMETHODIMP EchoConnectionInfo() override {
        return call<&IKelStream::EchoConnectionInfo>("EchoConnectionInfo");
    }
    STDMETHODIMP Sleep(long duration) override {
        return call<&IKelStream::Sleep>("Sleep", duration);
    }
    STDMETHODIMP get_IdleProcessing(VARIANT_BOOL* enabled) override {
        return call<&IKelStream::get_IdleProcessing>("get_IdleProcessing", enabled);
    }
    STDMETHODIMP put_IdleProcessing(VARIANT_BOOL enabled) override {
        const com::KeepAlive alive(*this);
        const HRESULT code = call<&IKelStream::put_IdleProcessing>("put_IdleProcessing", enabled);
        if (SUCCEEDED(code)) runsMessages_ = com::isTrue(enabled);
        return code;
    }
    STDMETHODIMP get_ConnectionString(BSTR* connection) override {
        return call<&IKelStream::get_ConnectionString, Treatment::kState>("get_ConnectionString",
                                                                          connection);
    }
    STDMETHODIMP get_EchoHexMode(VARIANT_BOOL* enabled) override {
        return call<&IKelStream::get_EchoHexMode>("get_EchoHexMode", enabled);
    }
    STDMETHODIMP put_EchoHexMode(VARIANT_BOOL enabled) override {
        return call<&IKelStream::put_EchoHexMode>("put_EchoHexMode", enabled);
    }
    STDMETHODIMP get_BytesInReadBuffer(long* count) override {
        return call<&IKelStream::get_BytesInReadBuffer, Treatment::kPolled>("get_BytesInReadBuffer",
                                                                            count);
    }

    STDMETHODIMP get_EchoWindow(long* window) override {
        if (!window)
            return this->template call<&IKelStream::get_EchoWindow>("get_EchoWindow", window);
        return echoCall<&IKelStream::get_EchoWindow>("get_EchoWindow", window, [=, this] {
            if (!this->wrapped()) {
                *window = relay_.target();
                return S_OK;
            }
            const HRESULT code = this->wrapped()->get_EchoWindow(window);
            if (SUCCEEDED(code)) *window = relay_.targetOf(*window);
            return code;
        });
    }
    // What the link still has to show goes to the window that it was for.
    STDMETHODIMP put_EchoWindow(long window) override {
        return echoCall<&IKelStream::put_EchoWindow>("put_EchoWindow", window, [=, this] {
            HRESULT code = S_OK;
            if (this->wrapped()) code = this->wrapped()->put_EchoWindow(relay_.handleFor(window));
            if (SUCCEEDED(code)) relay_.setTarget(window);
            return code;
        });
    }

    void show(const std::wstring& text) override {
        appendText(static_cast<HWND>(LongToHandle(relay_.target())), text);
    }
    bool runsMessages() const override { return runsMessages_; }

protected:
    template <auto method, Treatment treatment = Treatment::kCompared, class... Arguments>
    HRESULT call(const char* name, Arguments... arguments) noexcept {
        return Base::template call<method, treatment>(name, arguments...);
    }

private:
    template <auto method, class Argument, class Forward>
    HRESULT echoCall(const char* name, Argument argument, Forward&& forward) noexcept {
        return this->guardedCall([&] {
            Invocation made = this->template invocation<method, Treatment::kLocal>(name, argument);
            made.forward = forward;
            return made;
        });
    }

    // The inner stream may outlive its wrapper, and its echo window with it.
    void giveEchoBack() {
        long handle = 0;
        if (!this->wrapped() || relay_.target() == 0) return;
        if (FAILED(this->wrapped()->get_EchoWindow(&handle))) return;
        if (relay_.targetOf(handle) != handle) this->wrapped()->put_EchoWindow(relay_.target());
    }

    EchoRelay relay_{[this](const std::wstring& text) { this->session().tellShown(*this, text); }};
    bool runsMessages_ = true;
};

// A stream of neither of the kinds below.
class PlainStream final : public StreamWrapper<PlainStream, IKelStream> {
public:
    using StreamWrapper::StreamWrapper;
};

class SerialStream final : public StreamWrapper<SerialStream, ISerialStream, IKelStream> {
public:
    using StreamWrapper::StreamWrapper;

    STDMETHODIMP OpenPort(BSTR port, long baudRate, VARIANT_BOOL* result) override {
        return call<&ISerialStream::OpenPort, Treatment::kConnecting>("OpenPort", port, baudRate,
                                                                      result);
    }
    STDMETHODIMP PortExists(BSTR port, VARIANT_BOOL* exists) override {
        return call<&ISerialStream::PortExists>("PortExists", port, exists);
    }
    STDMETHODIMP SetLineSettings(BSTR parity, long dataBits, long stopBits,
                                 VARIANT_BOOL* result) override {
        return call<&ISerialStream::SetLineSettings>("SetLineSettings", parity, dataBits, stopBits,
                                                     result);
    }
};

template <class Derived, class Interface, class... Bases>
class NetworkStreamOf : public StreamWrapper<Derived, Interface, Bases..., IKelStream> {
    using Base = StreamWrapper<Derived, Interface, Bases..., IKelStream>;

public:
    using Base::Base;

    STDMETHODIMP ConnectTo(BSTR address, BSTR port, VARIANT_BOOL* result) override {
        return this->template call<&INetworkStream::ConnectTo, Treatment::kConnecting>(
            "ConnectTo", address, port, result);
    }
};

class NetworkStream final : public NetworkStreamOf<NetworkStream, INetworkStream> {
public:
    using NetworkStreamOf::NetworkStreamOf;
};

// A stream that can tell a gateway a password, which a recording does not.
class GatewayStream final : public NetworkStreamOf<GatewayStream, INetworkStream2, INetworkStream> {
public:
    using NetworkStreamOf::NetworkStreamOf;

    STDMETHODIMP get_PasswordRequired(VARIANT_BOOL* required) override {
        return call<&INetworkStream2::get_PasswordRequired>("get_PasswordRequired", required);
    }
    STDMETHODIMP put_Password(BSTR password) override {
        return guardedCall([&] {
            Invocation made = invocation<&INetworkStream2::put_Password>("put_Password", password);
            made.isSecret = true;
            return made;
        });
    }
};

}  // namespace kel::trace
