#pragma once
// The border of the link's streams: what IKelStream promises, over the common stream.

#include <windows.h>

#include <string>

#include "bench/link/bytes.h"
#include "bench/link/stream.h"
#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::bench {

// `Interface` derives from IKelStream, by way of `Bases` if there are any; `Port` is its transport.
template <class Derived, class Interface, class Port, class... Bases>
class StreamObject : public com::Object<Derived, com::Dual<Interface, Bases..., IKelStream>> {
public:
    STDMETHODIMP Close() override {
        return operation([&] { stream_.close(); });
    }

    STDMETHODIMP get_IsOpen(VARIANT_BOOL* open) override {
        return operation([&] { com::out(open) = com::variantBool(port_.isOpen()); });
    }

    STDMETHODIMP ReadByte(long timeout, unsigned char* byte, VARIANT_BOOL* result) override {
        return operation([&] {
            prepare(byte, result);
            const auto read = stream_.readByte(timeout);
            *byte = read.value_or(0);
            *result = com::variantBool(read.has_value());
        });
    }

    STDMETHODIMP WriteByte(unsigned char byte, long timeout, VARIANT_BOOL* result) override {
        const char character = static_cast<char>(byte);
        return write(timeout, result, [&] { return std::string(1, character); });
    }

    STDMETHODIMP ReadBuffer(long count, long timeout, VARIANT* data,
                            VARIANT_BOOL* result) override {
        return operation([&] {
            prepare(data, result);
            if (count < 0) throw com::Error(E_INVALIDARG, L"A number of bytes is negative");
            const auto reading = stream_.read(static_cast<std::size_t>(count), timeout);
            *data = byteArray(reading.bytes).release();
            *result = com::variantBool(reading.complete);
        });
    }

    STDMETHODIMP WriteBuffer(VARIANT data, long timeout, VARIANT_BOOL* result) override {
        return write(timeout, result, [&] { return bytesOf(data); });
    }

    STDMETHODIMP WriteString(BSTR text, VARIANT_BOOL lineEnd, long timeout,
                             VARIANT_BOOL* result) override {
        return write(timeout, result,
                     [&] { return com::narrow(text) + (com::isTrue(lineEnd) ? "\r" : ""); });
    }

    STDMETHODIMP ReadString(long timeout, BSTR* text, VARIANT_BOOL* result) override {
        return operation([&] {
            prepare(text, result);
            give(stream_.readLine(timeout), text, result);
        });
    }

    STDMETHODIMP WaitForString(BSTR text, long timeout, BSTR stopText, BSTR* response,
                               VARIANT_BOOL* result) override {
        return operation([&] {
            prepare(response, result);
            give(stream_.waitFor(com::narrow(text), com::narrow(stopText), timeout), response,
                 result);
        });
    }

    STDMETHODIMP SendBreak(long duration) override {
        return operation([&] { stream_.sendBreak(duration); });
    }

    STDMETHODIMP ClearReadBuffer() override {
        return operation([&] { stream_.clear(); });
    }

    STDMETHODIMP get_BaudRate(long* rate) override {
        return operation([&] {
            com::out(rate) = 0;
            *rate = port_.baudRate();
        });
    }
    STDMETHODIMP put_BaudRate(long rate) override {
        return operation([&] {
            if (rate <= 0) throw com::Error(E_INVALIDARG, L"A baud rate is above zero");
            port_.setBaudRate(rate);
        });
    }

    STDMETHODIMP get_LogFile(BSTR* path) override {
        return operation([&] {
            com::out(path) = nullptr;
            *path = com::Bstr(stream_.log().path()).release();
        });
    }
    STDMETHODIMP put_LogFile(BSTR path) override {
        return operation([&] { stream_.log().open(std::wstring(com::view(path))); });
    }

    STDMETHODIMP get_EchoWindow(long* window) override {
        return operation(
            [&] { com::out(window) = static_cast<long>(HandleToLong(stream_.echo().window())); });
    }
    STDMETHODIMP put_EchoWindow(long window) override {
        return operation(
            [&] { stream_.echo().setWindow(static_cast<HWND>(LongToHandle(window))); });
    }

    STDMETHODIMP Echo(BSTR text) override {
        return operation([&] {
            stream_.echo().add(com::view(text));
            stream_.echo().flush();
        });
    }

    STDMETHODIMP EchoConnectionInfo() override {
        return operation([&] {
            const std::wstring info = port_.isOpen() ? port_.description() : L"Not connected";
            stream_.echo().add(L"\r\n" + info + L"\r\n");
            stream_.echo().flush();
        });
    }

    STDMETHODIMP Sleep(long duration) override {
        return operation([&] { stream_.sleep(duration); });
    }

    STDMETHODIMP get_IdleProcessing(VARIANT_BOOL* enabled) override {
        return operation([&] { com::out(enabled) = com::variantBool(stream_.idleProcessing()); });
    }
    STDMETHODIMP put_IdleProcessing(VARIANT_BOOL enabled) override {
        return operation([&] { stream_.setIdleProcessing(com::isTrue(enabled)); });
    }

    STDMETHODIMP get_ConnectionString(BSTR* connection) override {
        return operation([&] {
            com::out(connection) = nullptr;
            *connection = com::Bstr(port_.address()).release();
        });
    }

    STDMETHODIMP get_EchoHexMode(VARIANT_BOOL* enabled) override {
        return operation([&] { com::out(enabled) = com::variantBool(echoHexMode_); });
    }
    STDMETHODIMP put_EchoHexMode(VARIANT_BOOL enabled) override {
        return operation([&] { echoHexMode_ = com::isTrue(enabled); });
    }

    STDMETHODIMP get_BytesInReadBuffer(long* count) override {
        return operation([&] {
            com::out(count) = 0;
            *count = static_cast<long>(stream_.available());
        });
    }

protected:
    // The border of every member: handlers that run meanwhile may drop the last reference.
    template <class Body>
    HRESULT operation(Body&& body) noexcept {
        const com::KeepAlive alive(*this);
        return this->template guarded<Interface>(std::forward<Body>(body));
    }

    Port port_;
    Stream stream_{port_};

private:
    // Checks all results before anything happens, and empties them.
    template <class Value>
    static void prepare(Value* value, VARIANT_BOOL* result) {
        com::out(value) = Value{};
        com::out(result) = VARIANT_FALSE;
    }

    static void give(const Stream::Reading& reading, BSTR* text, VARIANT_BOOL* result) {
        *text = com::Bstr(std::string_view(reading.bytes)).release();
        *result = com::variantBool(reading.complete);
    }

    template <class Bytes>
    HRESULT write(long timeout, VARIANT_BOOL* result, Bytes&& bytes) noexcept {
        return operation([&] {
            com::out(result) = VARIANT_FALSE;
            *result = com::variantBool(stream_.write(bytes(), timeout));
        });
    }

    // Kept for hosts; the echo shows texts only.
    bool echoHexMode_ = false;
};

}  // namespace kel::bench
