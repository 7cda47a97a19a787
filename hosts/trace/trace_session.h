#pragma once
// The component that hosts control a session with.

#include <memory>
#include <optional>

#include "com/object.h"
#include "hosts/trace/KelTrace.h"
#include "hosts/trace/class_objects.h"
#include "hosts/trace/session.h"

namespace kel::trace {

// {89BC96B9-F8DB-4CBF-B7A3-1D61800D1CEC}
inline constexpr CLSID kTraceSessionClass = {
    0x89BC96B9, 0xF8DB, 0x4CBF, {0xB7, 0xA3, 0x1D, 0x61, 0x80, 0x0D, 0x1C, 0xEC}};

// A session is open from the first member that needs it to be until it is closed; one at a time in
// a process, since class objects are the process's.
class TraceSession final : public com::Object<TraceSession, com::Dual<ITraceSession>> {
public:
    static constexpr com::ClassDescription kClass{&kTraceSessionClass, nullptr};

    ~TraceSession() override;

    STDMETHODIMP Record(BSTR path) override;
    STDMETHODIMP Replay(BSTR path, double speed) override;
    STDMETHODIMP Attach(IKelCommunicator* inner, IKelCommunicator** link) override;
    STDMETHODIMP FailCall(long call, long result) override;
    STDMETHODIMP FailMethod(BSTR method, long call, long result) override;
    STDMETHODIMP ClearFailure() override;
    STDMETHODIMP get_CallCount(long* count) override;
    STDMETHODIMP SetPosition(BSTR file, long line) override;
    STDMETHODIMP get_Difference(BSTR* text) override;
    STDMETHODIMP get_CallsLeft(long* count) override;
    STDMETHODIMP Close() override;
    STDMETHODIMP Watch(ITraceWatcher* watcher) override;
    STDMETHODIMP Wrap(IUnknown* inner, IUnknown** traced) override;

private:
    void open();
    void end();
    void planFailure(const std::wstring& method, long call, long result);

    const std::shared_ptr<Session> session_ = std::make_shared<Session>();
    std::optional<ClassObjects> classObjects_;
    bool isClosed_ = false;
};

}  // namespace kel::trace
