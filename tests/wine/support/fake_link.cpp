#include "tests/wine/support/fake_link.h"

#include "com/object.h"
#include "com/scoped.h"
#include "com/variant.h"

namespace kel::test {
namespace {

// Members that nothing uses are refused.
template <class Derived, class... Interfaces>
class FakeStreamOf : public com::Object<Derived, com::Dual<Interfaces..., IKelStream>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit FakeStreamOf(FakeLink& link) : link_(link) {}

    STDMETHODIMP Close() override { return S_OK; }
    STDMETHODIMP get_IsOpen(VARIANT_BOOL* open) override { return link_.answer("IsOpen", open); }
    STDMETHODIMP ReadByte(long, unsigned char*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WriteByte(unsigned char, long, VARIANT_BOOL* result) override {
        return link_.answer("WriteByte", result);
    }
    STDMETHODIMP ReadBuffer(long, long, VARIANT*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WriteBuffer(VARIANT, long, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WriteString(BSTR, VARIANT_BOOL, long, VARIANT_BOOL* result) override {
        return link_.answer("WriteString", result);
    }
    STDMETHODIMP ReadString(long, BSTR*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP WaitForString(BSTR, long, BSTR, BSTR* response, VARIANT_BOOL* result) override {
        *response = com::Bstr(std::wstring_view(link_.reply)).release();
        return link_.answer("WaitForString", result);
    }
    STDMETHODIMP SendBreak(long) override { return E_NOTIMPL; }
    STDMETHODIMP ClearReadBuffer() override {
        if (link_.received) link_.received->clear();
        return S_OK;
    }
    STDMETHODIMP get_BaudRate(long* rate) override { return *rate = link_.baudRate, S_OK; }
    STDMETHODIMP put_BaudRate(long rate) override { return link_.baudRate = rate, S_OK; }
    STDMETHODIMP get_LogFile(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP put_LogFile(BSTR) override { return S_OK; }
    STDMETHODIMP get_EchoWindow(long* window) override { return *window = link_.echoWindow, S_OK; }
    STDMETHODIMP put_EchoWindow(long window) override { return link_.echoWindow = window, S_OK; }
    STDMETHODIMP Echo(BSTR) override { return S_OK; }
    STDMETHODIMP EchoConnectionInfo() override { return S_OK; }
    STDMETHODIMP Sleep(long) override { return S_OK; }
    STDMETHODIMP get_IdleProcessing(VARIANT_BOOL* enabled) override {
        return *enabled = com::variantBool(link_.isIdleProcessing), S_OK;
    }
    STDMETHODIMP put_IdleProcessing(VARIANT_BOOL enabled) override {
        return link_.isIdleProcessing = com::isTrue(enabled), S_OK;
    }
    STDMETHODIMP get_ConnectionString(BSTR* connection) override {
        *connection = com::Bstr(std::wstring_view(link_.connectionString)).release();
        return S_OK;
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

    STDMETHODIMP OpenPort(BSTR port, long, VARIANT_BOOL* result) override {
        const std::wstring_view name = com::view(port);
        const auto busy = link_.busyPorts.find(name.substr(0, name.find(L':')));
        const bool isFree = busy == link_.busyPorts.end();
        *result = isFree ? 1 : 0;
        SetLastError(isFree ? ERROR_SUCCESS : busy->second);
        return S_OK;
    }
    STDMETHODIMP PortExists(BSTR port, VARIANT_BOOL* exists) override {
        return *exists = link_.absentPorts.contains(com::view(port)) ? 0 : 1, S_OK;
    }
    STDMETHODIMP SetLineSettings(BSTR, long, long, VARIANT_BOOL* result) override {
        return link_.answer("SetLineSettings", result);
    }
};

class FakeNetworkStream final
    : public FakeStreamOf<FakeNetworkStream, INetworkStream2, INetworkStream> {
public:
    using FakeStreamOf::FakeStreamOf;

    STDMETHODIMP ConnectTo(BSTR, BSTR, VARIANT_BOOL* result) override {
        isRefused_ = password_ != link_.gatewayPassword;
        return isRefused_ ? (*result = VARIANT_FALSE, S_OK) : link_.answer("ConnectTo", result);
    }
    STDMETHODIMP get_PasswordRequired(VARIANT_BOOL* required) override {
        return *required = isRefused_ ? 1 : 0, S_OK;
    }
    STDMETHODIMP put_Password(BSTR password) override {
        return password_ = com::view(password), S_OK;
    }

private:
    std::wstring password_;
    bool isRefused_ = false;
};

}  // namespace

class FakeCommunicator final : public com::Object<FakeCommunicator, com::Dual<IKelCommunicator>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit FakeCommunicator(FakeLink& link) : link_(link) {}

    STDMETHODIMP WakeUpInstrument(VARIANT_BOOL* result) override {
        return link_.answer("Link.WakeUpInstrument", result);
    }
    STDMETHODIMP SendCommand(BSTR, VARIANT_BOOL, long, VARIANT_BOOL* result) override {
        return link_.answer("Link.SendCommand", result);
    }
    STDMETHODIMP WaitForString(BSTR text, long, VARIANT_BOOL, VARIANT_BOOL* result) override {
        if (!link_.received) return link_.answer("Link.WaitForString", result);
        return *result = link_.received->find(com::narrow(text)) != std::string::npos, S_OK;
    }
    STDMETHODIMP SendBreak(long) override { return S_OK; }
    STDMETHODIMP RunCommandFile(BSTR, VARIANT_BOOL* result) override {
        return link_.answer("Link.RunCommandFile", result);
    }
    STDMETHODIMP get_Port(IKelStream** port) override {
        *port = nullptr;
        if (!link_.hasPort) return S_OK;
        return (link_.isNetwork ? link_.innerNetwork_ : link_.innerPort_).CopyTo(port);
    }
    STDMETHODIMP put_Port(IKelStream*) override { return S_OK; }
    STDMETHODIMP get_Preprocessor(IPreprocessor** preprocessor) override {
        return com::ComPtr<IPreprocessor>(link_.preprocessor).CopyTo(preprocessor);
    }
    STDMETHODIMP put_Preprocessor(IPreprocessor*) override { return E_NOTIMPL; }
    STDMETHODIMP get_FastConnection(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_FastConnection(VARIANT_BOOL) override { return S_OK; }
    STDMETHODIMP get_RadioConnection(VARIANT_BOOL* radio) override {
        return *radio = link_.isRadio, S_OK;
    }
    STDMETHODIMP put_RadioConnection(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_RS485Address(long*) override { return E_NOTIMPL; }
    STDMETHODIMP put_RS485Address(long) override { return E_NOTIMPL; }
    STDMETHODIMP get_SDI12Mode(VARIANT_BOOL* enabled) override {
        return *enabled = link_.isSdi12, S_OK;
    }
    STDMETHODIMP put_SDI12Mode(VARIANT_BOOL) override { return E_NOTIMPL; }

private:
    HRESULT findElsewhere(REFIID iid, void** result) override {
        return link_.access ? link_.access->QueryInterface(iid, result) : E_NOINTERFACE;
    }

    FakeLink& link_;
};

FakeLink::FakeLink(CallLog& log, const std::string& prefix)
    : innerPort_(com::makeObject<FakeStream>(*this)),
      innerNetwork_(com::makeObject<FakeNetworkStream>(*this)),
      innerCommunicator_(com::makeObject<FakeCommunicator>(*this)->controlling()),
      communicator_(log.around<IKelCommunicator>(innerCommunicator_.Get(), prefix + "Link.")),
      port_(log.around<IKelStream>(innerPort_.Get(), prefix)),
      network_(log.around<INetworkStream2>(innerNetwork_.Get(), prefix)) {}

long FakeLink::shownIn() {
    const com::Scoped quiet(onCall, decltype(onCall)());
    const std::vector<std::string> told = calls;
    long window = -1;
    com::check(port()->get_EchoWindow(&window));
    calls = told;
    return window;
}

HRESULT FakeLink::answer(const char* name, VARIANT_BOOL* result) {
    std::deque<bool>& left = answers[name];
    *result = left.empty() || left.front() ? 1 : 0;
    if (!left.empty()) left.pop_front();
    return S_OK;
}

}  // namespace kel::test
