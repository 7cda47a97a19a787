#include "hosts/trace/trace_session.h"

#include "com/text.h"
#include "hosts/trace/arguments.h"
#include "hosts/trace/kinds.h"

namespace kel::trace {
namespace {

const TraceSession* openSession = nullptr;

}  // namespace

TraceSession::~TraceSession() {
    end();
    try {
        session_->close();
    } catch (const com::Error&) {
        // A host that wants to know calls Close.
    }
}

void TraceSession::open() {
    if (isClosed_) throw com::Error(E_UNEXPECTED, L"The session has been closed");
    if (classObjects_) return;
    if (openSession) {
        throw com::Error(HRESULT_FROM_WIN32(ERROR_BUSY), L"Another trace session is open");
    }
    classObjects_.emplace(session_);
    openSession = this;
}

void TraceSession::end() {
    classObjects_.reset();
    if (openSession == this) openSession = nullptr;
}

HRESULT TraceSession::Record(BSTR path) {
    return guarded<ITraceSession>([&] {
        open();
        session_->record(std::wstring(com::view(path)));
    });
}

HRESULT TraceSession::Replay(BSTR path, double speed) {
    return guarded<ITraceSession>([&] {
        if (classObjects_ || isClosed_) {
            throw com::Error(E_UNEXPECTED, L"A replay is the first thing that a session does");
        }
        session_->replay(std::wstring(com::view(path)), speed);
        open();
    });
}

HRESULT TraceSession::Attach(IKelCommunicator* inner, IKelCommunicator** link) {
    return guarded<ITraceSession>([&] {
        com::out(link) = nullptr;
        if (session_->isReplay() != !inner) {
            throw com::Error(E_INVALIDARG, L"A replay, and nothing else, does without a link");
        }
        open();
        const com::ComPtr<IUnknown> wrapper =
            inner ? wrap(session_, inner)
                  : replayed(session_, session_->objects().nextName("link"));
        com::check(wrapper->QueryInterface(IID_PPV_ARGS(link)));
    });
}

HRESULT TraceSession::FailCall(long call, long result) {
    return guarded<ITraceSession>([&] { planFailure({}, call, result); });
}

HRESULT TraceSession::FailMethod(BSTR method, long call, long result) {
    return guarded<ITraceSession>(
        [&] { planFailure(std::wstring(com::view(method)), call, result); });
}

void TraceSession::planFailure(const std::wstring& method, long call, long result) {
    if (call < 1 || SUCCEEDED(result)) {
        throw com::Error(E_INVALIDARG, L"A call is counted from 1 and fails with a failing code");
    }
    open();
    session_->failures().set(com::narrow(method, CP_UTF8), call, result);
}

HRESULT TraceSession::ClearFailure() {
    session_->failures().clear();
    return S_OK;
}

HRESULT TraceSession::get_CallCount(long* count) {
    return guarded<ITraceSession>([&] { com::out(count) = session_->callCount(); });
}

HRESULT TraceSession::SetPosition(BSTR file, long line) {
    return guarded<ITraceSession>([&] { session_->setPosition({toText(com::view(file)), line}); });
}

HRESULT TraceSession::get_Difference(BSTR* text) {
    return guarded<ITraceSession>([&] {
        com::out(text) = nullptr;
        *text = com::Bstr(com::widen(session_->difference(), CP_UTF8)).release();
    });
}

HRESULT TraceSession::get_CallsLeft(long* count) {
    return guarded<ITraceSession>(
        [&] { com::out(count) = static_cast<long>(session_->callsLeft()); });
}

HRESULT TraceSession::Close() {
    return guarded<ITraceSession>([&] {
        isClosed_ = true;
        end();
        session_->close();
    });
}

HRESULT TraceSession::Watch(ITraceWatcher* watcher) {
    return guarded<ITraceSession>([&] {
        open();
        session_->watch(watcher);
    });
}

HRESULT TraceSession::Wrap(IUnknown* inner, IUnknown** traced) {
    return guarded<ITraceSession>([&] {
        com::out(traced) = nullptr;
        if (!inner || session_->isReplay()) {
            throw com::Error(E_INVALIDARG, L"There is nothing to wrap");
        }
        open();
        *traced = wrap(session_, inner).Detach();
    });
}

}  // namespace kel::trace
