#include "tests/wine/support/fake_link.h"

#include "com/object.h"
#include "com/variant.h"
#include "tests/support/cases.h"

namespace kel::test {
namespace {

std::string quoted(BSTR text) {
    return std::string("\"").append(com::narrow(text)).append("\"");
}

std::string number(long value) {
    return std::to_string(value);
}

constexpr const IID& kLink = __uuidof(IKelCommunicator);
constexpr const IID& kStream = __uuidof(IKelStream);
constexpr const IID& kSerial = __uuidof(ISerialStream);
constexpr const IID& kNetwork = __uuidof(INetworkStream);

}  // namespace

// Members that nothing uses are told and refused.
template <class Derived, class... Interfaces>
class FakeStreamOf : public com::Object<Derived, com::Dual<Interfaces..., IKelStream>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit FakeStreamOf(FakeLink& link) : link_(link) {}

    STDMETHODIMP Close() override { return link_.call(kStream, "Close"); }
    STDMETHODIMP get_IsOpen(VARIANT_BOOL* open) override {
        return link_.ask(kStream, "IsOpen", "", open);
    }
    STDMETHODIMP ReadByte(long, unsigned char*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WriteByte(unsigned char byte, long timeout, VARIANT_BOOL* result) override {
        return link_.ask(kStream, "WriteByte", number(byte) + " " + number(timeout), result);
    }
    STDMETHODIMP ReadBuffer(long, long, VARIANT*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WriteBuffer(VARIANT, long, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WriteString(BSTR text, VARIANT_BOOL lineEnd, long timeout,
                             VARIANT_BOOL* result) override {
        return link_.ask(kStream, "WriteString",
                         quoted(text) + (lineEnd ? " CR " : " ") + number(timeout), result);
    }
    STDMETHODIMP ReadString(long, BSTR*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WaitForString(BSTR text, long timeout, BSTR stop, BSTR* response,
                               VARIANT_BOOL* result) override {
        return link_.call(
            kStream, "WaitForString " + quoted(text) + " " + number(timeout) + " " + quoted(stop),
            [&] {
                *response = com::Bstr(std::wstring_view(link_.reply)).release();
                *result = link_.nextAnswer("WaitForString");
            });
    }
    STDMETHODIMP SendBreak(long) override { return E_NOTIMPL; }
    STDMETHODIMP ClearReadBuffer() override {
        return link_.call(kStream, "ClearReadBuffer", [&] {
            if (link_.received) link_.received->clear();
        });
    }
    STDMETHODIMP get_BaudRate(long* rate) override {
        return link_.call(kStream, "BaudRate", [&] { *rate = link_.baudRate; });
    }
    STDMETHODIMP put_BaudRate(long rate) override {
        return link_.call(kStream, "BaudRate = " + number(rate), [&] { link_.baudRate = rate; });
    }
    STDMETHODIMP get_LogFile(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP put_LogFile(BSTR path) override {
        return link_.call(kStream, "LogFile = " + quoted(path));
    }
    STDMETHODIMP get_EchoWindow(long* window) override {
        return link_.call(kStream, "EchoWindow", [&] { *window = link_.echoWindow; });
    }
    STDMETHODIMP put_EchoWindow(long window) override {
        return link_.call(kStream, "EchoWindow = " + number(window),
                          [&] { link_.echoWindow = window; });
    }
    STDMETHODIMP Echo(BSTR text) override { return link_.call(kStream, "Echo " + quoted(text)); }
    STDMETHODIMP EchoConnectionInfo() override { return link_.call(kStream, "EchoConnectionInfo"); }
    STDMETHODIMP Sleep(long duration) override {
        return link_.call(kStream, "Sleep " + number(duration));
    }
    STDMETHODIMP get_IdleProcessing(VARIANT_BOOL* enabled) override {
        return link_.call(kStream, "IdleProcessing",
                          [&] { *enabled = com::variantBool(link_.isIdleProcessing); });
    }
    STDMETHODIMP put_IdleProcessing(VARIANT_BOOL enabled) override {
        return link_.call(kStream, "IdleProcessing = " + number(enabled),
                          [&] { link_.isIdleProcessing = com::isTrue(enabled); });
    }
    STDMETHODIMP get_ConnectionString(BSTR* connection) override {
        return link_.call(kStream, "ConnectionString", [&] {
            *connection = com::Bstr(std::wstring_view(link_.connectionString)).release();
        });
    }
    STDMETHODIMP get_EchoHexMode(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_EchoHexMode(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_BytesInReadBuffer(long* count) override {
        *count = link_.received ? static_cast<long>(link_.received->size()) : 0;
        return S_OK;
    }

protected:
    FakeLink& link_;
};

class FakeStream final : public FakeStreamOf<FakeStream, ISerialStream> {
public:
    using FakeStreamOf::FakeStreamOf;

    STDMETHODIMP OpenPort(BSTR port, long rate, VARIANT_BOOL* result) override {
        DWORD error = ERROR_SUCCESS;
        const HRESULT code =
            link_.call(kSerial, "OpenPort " + com::narrow(port) + " " + number(rate), [&] {
                const std::wstring_view name = com::view(port);
                const auto busy = link_.busyPorts.find(name.substr(0, name.find(L':')));
                if (busy != link_.busyPorts.end()) error = busy->second;
                *result = error == ERROR_SUCCESS ? 1 : 0;
            });
        SetLastError(error);
        return code;
    }
    STDMETHODIMP PortExists(BSTR port, VARIANT_BOOL* exists) override {
        return link_.call(kSerial, "PortExists " + com::narrow(port),
                          [&] { *exists = link_.absentPorts.contains(com::view(port)) ? 0 : 1; });
    }
    STDMETHODIMP SetLineSettings(BSTR parity, long dataBits, long stopBits,
                                 VARIANT_BOOL* result) override {
        return link_.ask(__uuidof(ISerialStream), "SetLineSettings",
                         quoted(parity) + " " + number(dataBits) + " " + number(stopBits), result);
    }

protected:
    void* findInterface(REFIID iid) override {
        if (iid == __uuidof(ISerialStream) && !link_.isSerial) return nullptr;
        return Object::findInterface(iid);
    }
};

class FakeNetworkStream final
    : public FakeStreamOf<FakeNetworkStream, INetworkStream2, INetworkStream> {
public:
    using FakeStreamOf::FakeStreamOf;

    STDMETHODIMP ConnectTo(BSTR address, BSTR port, VARIANT_BOOL* result) override {
        return link_.call(kNetwork, "ConnectTo " + com::narrow(address) + " " + com::narrow(port),
                          [&] {
                              isRefused_ = password_ != link_.gatewayPassword;
                              *result = isRefused_ ? VARIANT_FALSE : link_.nextAnswer("ConnectTo");
                          });
    }
    STDMETHODIMP get_PasswordRequired(VARIANT_BOOL* required) override {
        return link_.call(kNetwork, "PasswordRequired", [&] { *required = isRefused_ ? 1 : 0; });
    }
    STDMETHODIMP put_Password(BSTR password) override {
        return link_.call(kNetwork, "Password = " + quoted(password),
                          [&] { password_ = com::view(password); });
    }

private:
    std::wstring password_;
    bool isRefused_ = false;
};

class FakeCommunicator final : public com::Object<FakeCommunicator, com::Dual<IKelCommunicator>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit FakeCommunicator(FakeLink& link) : link_(link) {}

    STDMETHODIMP WakeUpInstrument(VARIANT_BOOL* result) override {
        return link_.ask(kLink, "Link.WakeUpInstrument", "", result);
    }
    STDMETHODIMP SendCommand(BSTR command, VARIANT_BOOL waitForOk, long timeout,
                             VARIANT_BOOL* result) override {
        return link_.ask(kLink, "Link.SendCommand",
                         quoted(command) + (waitForOk ? " OK " : " ") + number(timeout), result);
    }
    STDMETHODIMP WaitForString(BSTR text, long timeout, VARIANT_BOOL stopOnPrompt,
                               VARIANT_BOOL* result) override {
        const std::string arguments =
            quoted(text) + " " + number(timeout) + (stopOnPrompt ? " stop" : "");
        return link_.call(kLink, "Link.WaitForString " + arguments, [&] {
            *result = link_.received ? link_.received->find(com::narrow(text)) != std::string::npos
                                     : link_.nextAnswer("Link.WaitForString");
        });
    }
    STDMETHODIMP SendBreak(long duration) override {
        return link_.call(kLink, "Link.SendBreak " + number(duration));
    }
    STDMETHODIMP RunCommandFile(BSTR path, VARIANT_BOOL* result) override {
        if (!link_.runFile) return link_.ask(kLink, "Link.RunCommandFile", quoted(path), result);
        HRESULT code = S_OK;
        const HRESULT told = link_.call(kLink, "Link.RunCommandFile " + quoted(path),
                                        [&] { code = link_.runFile(path, result); });
        return FAILED(told) ? told : code;
    }
    STDMETHODIMP get_Port(IKelStream** port) override {
        return link_.call(kLink, "", [&] {
            *port = nullptr;
            if (link_.hasPort) link_.port_.CopyTo(port);
        });
    }
    STDMETHODIMP put_Port(IKelStream* port) override {
        return link_.call(kLink,
                          std::string("Link.Port = ") + (!port                       ? "nothing"
                                                         : port == link_.port_.Get() ? "port"
                                                                                     : "foreign"));
    }
    STDMETHODIMP get_Preprocessor(IPreprocessor** preprocessor) override {
        com::ComPtr<IPreprocessor>(link_.preprocessor).CopyTo(preprocessor);
        return S_OK;
    }
    STDMETHODIMP put_Preprocessor(IPreprocessor*) override { return E_NOTIMPL; }
    STDMETHODIMP get_FastConnection(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_FastConnection(VARIANT_BOOL fast) override {
        return link_.call(kLink, "Link.FastConnection = " + number(fast));
    }
    STDMETHODIMP get_RadioConnection(VARIANT_BOOL* radio) override {
        return link_.call(kLink, "Link.RadioConnection", [&] { *radio = link_.isRadio; });
    }
    STDMETHODIMP put_RadioConnection(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_RS485Address(long*) override { return E_NOTIMPL; }
    STDMETHODIMP put_RS485Address(long) override { return E_NOTIMPL; }
    STDMETHODIMP get_SDI12Mode(VARIANT_BOOL* enabled) override {
        return link_.call(kLink, "Link.SDI12Mode", [&] { *enabled = link_.isSdi12; });
    }
    STDMETHODIMP put_SDI12Mode(VARIANT_BOOL) override { return E_NOTIMPL; }

private:
    HRESULT findElsewhere(REFIID iid, void** result) override {
        return link_.access ? link_.access->QueryInterface(iid, result) : E_NOINTERFACE;
    }

    FakeLink& link_;
};

FakeLink::FakeLink()
    : communicator_(com::makeObject<FakeCommunicator>(*this)),
      port_(com::makeObject<FakeStream>(*this)),
      network_(com::makeObject<FakeNetworkStream>(*this)) {}

std::string FakeLink::takeWork() {
    std::string work;
    for (const std::string& call : calls)
        if (call != "Sleep 1") work += escaped(call) + "\n";
    calls.clear();
    return work;
}

HRESULT FakeLink::call(const IID& iid, const std::string& text, std::function<void()> answer) {
    return com::guard(iid, L"FakeLink", [&] {
        if (!text.empty()) {
            calls.push_back(text);
            if (onCall) onCall(text);
        }
        answer();
    });
}

HRESULT FakeLink::ask(const IID& interfaceId, const std::string& name, const std::string& arguments,
                      VARIANT_BOOL* result) {
    return call(interfaceId, arguments.empty() ? name : name + " " + arguments,
                [&] { *result = nextAnswer(name); });
}

VARIANT_BOOL FakeLink::nextAnswer(const std::string& name) {
    const auto found = answers.find(name);
    if (found == answers.end() || found->second.empty()) return 1;
    const bool answer = found->second.front();
    found->second.pop_front();
    return answer ? 1 : 0;
}

}  // namespace kel::test
