#pragma once
// The link itself: a port, a preprocessor, and what is done with both.

#include <memory>
#include <string_view>

#include "bench/link/access/recorder_state.h"
#include "bench/link/clock.h"
#include "com/object.h"
#include "interfaces/KelUtils.h"

namespace kel::bench {

// Reaches the port only through IKelStream, so that any stream may be put. Without a port nothing
// can be sent or awaited: boolean results are false.
//
// The preprocessor is held by a reference, and holds the link by one: the host that tied the two
// together unties them, by putting nothing as the Preprocessor (or as the other's Communicator),
// before it lets them go.
class Communicator final : public com::Object<Communicator, com::Dual<IKelCommunicator>,
                                              com::Dual<IBinaryCommunicator>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.Communicator.1"};

    STDMETHODIMP WakeUpInstrument(VARIANT_BOOL* result) override;
    // With `waitForOk` the answer is taken to its end, the prompt included when it follows the OK
    // at once, so that it is not met again as the answer to the next command.
    STDMETHODIMP SendCommand(BSTR command, VARIANT_BOOL waitForOk, long timeout,
                             VARIANT_BOOL* result) override;
    STDMETHODIMP WaitForString(BSTR text, long timeout, VARIANT_BOOL stopOnPrompt,
                               VARIANT_BOOL* result) override;
    STDMETHODIMP SendBreak(long duration) override;
    STDMETHODIMP RunCommandFile(BSTR path, VARIANT_BOOL* result) override;
    STDMETHODIMP get_Port(IKelStream** stream) override;
    STDMETHODIMP put_Port(IKelStream* stream) override;
    STDMETHODIMP get_Preprocessor(IPreprocessor** preprocessor) override;
    STDMETHODIMP put_Preprocessor(IPreprocessor* preprocessor) override;
    STDMETHODIMP get_FastConnection(VARIANT_BOOL* fast) override;
    STDMETHODIMP put_FastConnection(VARIANT_BOOL fast) override;
    STDMETHODIMP get_RadioConnection(VARIANT_BOOL* radio) override;
    STDMETHODIMP put_RadioConnection(VARIANT_BOOL radio) override;
    // Kept for hosts, without effect here.
    STDMETHODIMP get_RS485Address(long* address) override;
    STDMETHODIMP put_RS485Address(long address) override;
    STDMETHODIMP get_SDI12Mode(VARIANT_BOOL* enabled) override;
    STDMETHODIMP put_SDI12Mode(VARIANT_BOOL enabled) override;

    // IBinaryCommunicator: E_NOTIMPL, this link has no binary instrument to talk to.
    STDMETHODIMP CreatePacket(IBinaryPacket** packet) override;
    STDMETHODIMP SendPacket(IBinaryPacket* packet, long timeout, VARIANT_BOOL* result) override;
    STDMETHODIMP ReceivePacket(long timeout, IBinaryPacket** packet) override;

protected:
    // Access to the recorder, a new object each time.
    HRESULT findElsewhere(REFIID iid, void** result) override;

private:
    // The border of every member: the calls made here may run the host's message loop.
    template <class Body>
    HRESULT operation(Body&& body) noexcept {
        const com::KeepAlive alive(*this);
        return guarded<IKelCommunicator>(std::forward<Body>(body));
    }

    bool send(IKelStream* port, std::wstring_view command);
    bool waitForAnswer(IKelStream* port, std::wstring_view command, Clock::Moment deadline);

    Clock clock_;
    com::ComPtr<IKelStream> port_;
    com::ComPtr<IPreprocessor> preprocessor_;
    bool fastConnection_ = false;
    bool radioConnection_ = false;
    bool sdi12Mode_ = false;
    long rs485Address_ = 0;
    const std::shared_ptr<RecorderState> recorder_ = std::make_shared<RecorderState>();
};

}  // namespace kel::bench
