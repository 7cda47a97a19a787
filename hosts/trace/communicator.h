#pragma once
// The wrapper of the link itself.

#include "hosts/trace/preprocessor_relay.h"
#include "hosts/trace/traced.h"

namespace kel::trace {

// The inner communicator gets inner streams, the host gets wrapped ones; the one that is the port
// is held, so that it is the same object whenever it is asked for. What the inner communicator does
// with its port is not traced, only what comes of it.
class Communicator final : public Traced<Communicator, IKelCommunicator> {
public:
    using Traced::Traced;

    STDMETHODIMP WakeUpInstrument(VARIANT_BOOL* result) override {
        return call<&IKelCommunicator::WakeUpInstrument>("WakeUpInstrument", result);
    }
    STDMETHODIMP SendCommand(BSTR command, VARIANT_BOOL waitForOk, long timeout,
                             VARIANT_BOOL* result) override {
        return call<&IKelCommunicator::SendCommand>("SendCommand", command, waitForOk, timeout,
                                                    result);
    }
    STDMETHODIMP WaitForString(BSTR text, long timeout, VARIANT_BOOL stopOnPrompt,
                               VARIANT_BOOL* result) override {
        return call<&IKelCommunicator::WaitForString>("WaitForString", text, timeout, stopOnPrompt,
                                                      result);
    }
    STDMETHODIMP SendBreak(long duration) override {
        return call<&IKelCommunicator::SendBreak>("SendBreak", duration);
    }
    // The contents of the file are an argument too: a changed file is a difference.
    STDMETHODIMP RunCommandFile(BSTR path, VARIANT_BOOL* result) override;
    STDMETHODIMP get_Port(IKelStream** stream) override;
    STDMETHODIMP put_Port(IKelStream* stream) override;
    STDMETHODIMP get_Preprocessor(IPreprocessor** preprocessor) override;
    STDMETHODIMP put_Preprocessor(IPreprocessor* preprocessor) override;
    STDMETHODIMP get_FastConnection(VARIANT_BOOL* fast) override {
        return call<&IKelCommunicator::get_FastConnection>("get_FastConnection", fast);
    }
    STDMETHODIMP put_FastConnection(VARIANT_BOOL fast) override {
        return call<&IKelCommunicator::put_FastConnection>("put_FastConnection", fast);
    }
    STDMETHODIMP get_RadioConnection(VARIANT_BOOL* radio) override {
        return call<&IKelCommunicator::get_RadioConnection>("get_RadioConnection", radio);
    }
    STDMETHODIMP put_RadioConnection(VARIANT_BOOL radio) override {
        return call<&IKelCommunicator::put_RadioConnection>("put_RadioConnection", radio);
    }
    STDMETHODIMP get_RS485Address(long* address) override {
        return call<&IKelCommunicator::get_RS485Address>("get_RS485Address", address);
    }
    STDMETHODIMP put_RS485Address(long address) override {
        return call<&IKelCommunicator::put_RS485Address>("put_RS485Address", address);
    }
    STDMETHODIMP get_SDI12Mode(VARIANT_BOOL* enabled) override {
        return call<&IKelCommunicator::get_SDI12Mode>("get_SDI12Mode", enabled);
    }
    STDMETHODIMP put_SDI12Mode(VARIANT_BOOL enabled) override {
        return call<&IKelCommunicator::put_SDI12Mode>("put_SDI12Mode", enabled);
    }

    bool runsMessages() const override;
    void runScript(const std::wstring& script) override;

protected:
    // The recorder's access is asked for here, and its answer told: a link may give the same object
    // each time, a new one, or be the access itself.
    HRESULT findElsewhere(REFIID iid, void** result) override;

private:
    HRESULT giveRecorder(void** result);
    HRESULT askForRecorder(com::ComPtr<IUnknown>& recorder);
    // For a recorder of the same identity, which is a part of the wrapper.
    void makeOwnRecorder(const std::string& name, IUnknown* inner, const Mobility& mobility);
    // A stream as the host sees it, and becomes the port that is held.
    HRESULT giveInnerPort(IKelStream** stream);
    HRESULT forwardPort(IKelStream* stream);
    HRESULT forwardPreprocessor(IPreprocessor* preprocessor);

    com::ComPtr<IKelStream> port_;
    com::ComPtr<PreprocessorRelay> relay_;
    com::ComPtr<IUnknown> ownRecorder_;
};

}  // namespace kel::trace
