#include "hosts/trace/session.h"

#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"
#include "hosts/trace/arguments.h"
#include "hosts/trace/model/difference.h"
#include "hosts/trace/model/speed.h"
#include "hosts/trace/model/trace_text.h"
#include "hosts/trace/published_error.h"

namespace kel::trace {
namespace {

constexpr wchar_t kSource[] = L"KelTrace";

std::wstring widened(std::string_view text) {
    return com::widen(text, CP_UTF8);
}

bool isCompared(Treatment treatment) {
    return treatment == Treatment::kCompared || treatment == Treatment::kRepeatable ||
           treatment == Treatment::kConnecting;
}

Rule ruleOf(Treatment treatment) {
    if (treatment == Treatment::kRepeatable) return Rule::kRepeatable;
    if (isCompared(treatment)) return Rule::kCompared;
    return treatment == Treatment::kState ? Rule::kState : Rule::kPolled;
}

}  // namespace

Session::Session() : stage_(objects_, lanes_) {}

void Session::requireNothing() const {
    if (isRecording_ || replay_ || isClosed_) {
        throw com::Error(E_UNEXPECTED, L"A session records once, or replays once");
    }
}

void Session::record(const std::wstring& path) {
    requireNothing();
    const std::lock_guard lock(mutex_);
    recorder_.emplace(path);
    isRecording_ = true;
}

void Session::replay(const std::wstring& path, double speed) {
    requireNothing();
    if (!objects_.isEmpty()) {
        throw com::Error(E_UNEXPECTED, L"A replay begins before there is any traced object");
    }
    if (!isSpeed(speed)) throw com::Error(E_INVALIDARG, L"A speed is not below zero");
    stage_.setSpeed(speed);
    try {
        replay_.emplace(readTrace(File::open(path).readAll()), stage_);
    } catch (const std::invalid_argument& error) {
        throw com::Error(HRESULT_FROM_WIN32(ERROR_INVALID_DATA),
                         L"'" + path + L"' is no trace: " + widened(error.what()));
    }
}

void Session::close() {
    isClosed_ = true;
    isRecording_ = false;
    watch(nullptr);
    HRESULT failure = S_OK;
    {
        const std::lock_guard lock(mutex_);
        recorder_.reset();
        failure = std::exchange(recordingFailure_, S_OK);
    }
    if (FAILED(failure))
        throw com::Error(failure, L"The recording could not be written to its end");
}

// What a watcher does when it is released must not meet the lock.
void Session::watch(ITraceWatcher* watcher) {
    com::ComPtr<ITraceWatcher> other = watcher;
    const std::lock_guard lock(mutex_);
    std::swap(watcher_, other);
}

void Session::setPosition(Position position) {
    const std::lock_guard lock(mutex_);
    position_ = std::move(position);
}

std::string Session::difference() const {
    return replay_ ? replay_->difference() : std::string();
}

std::size_t Session::callsLeft() const {
    return replay_ ? replay_->callsLeft() : 0;
}

HRESULT Session::perform(const Invocation& call) noexcept {
    // A call may drop the last object, and with it the session.
    const std::shared_ptr<Session> alive = shared_from_this();
    const Lanes::Stay stay(lanes_);
    DWORD lastError = GetLastError();
    const HRESULT result =
        com::guard(call.interfaceId, kSource, [&] { return decide(call, lastError); });
    SetLastError(lastError);
    return result;
}

HRESULT Session::decide(const Invocation& call, DWORD& lastError) {
    // The watcher may make calls of its own.
    const long number = ++calls_;
    const auto failure = failures_.next(call.interfaceName, call.method);
    std::wstring refusal;
    const HRESULT watched = askWatcher(call, refusal);
    if (failure) {
        return fail(call, number, *failure,
                    L"Call " + std::to_wstring(number) + L" fails on demand: " +
                        widened(describe(started(call, number))));
    }
    if (FAILED(watched)) return fail(call, number, watched, refusal);
    if (!replay_ || call.treatment == Treatment::kLocal) return forward(call, number, lastError);
    return answer(call, number, lastError);
}

// The host's error info is left as it is when the call goes on.
HRESULT Session::askWatcher(const Invocation& call, std::wstring& refusal) {
    com::ComPtr<ITraceWatcher> watcher;
    {
        const std::lock_guard lock(mutex_);
        watcher = watcher_;
    }
    if (!watcher) return S_OK;
    const com::Variant arguments = toVariant(call.in());
    com::ComPtr<IErrorInfo> before;
    GetErrorInfo(0, &before);
    const HRESULT result = watcher->CallStarts(call.object.wrapper(), com::Bstr(call.method).get(),
                                               arguments.get().parray);
    com::ComPtr<IErrorInfo> info;
    if (FAILED(result) && GetErrorInfo(0, &info) == S_OK) {
        com::Bstr description;
        com::check(info->GetDescription(description.put()));
        refusal = description.view();
    }
    SetErrorInfo(0, before.Get());
    return result;
}

CallStarted Session::started(const Invocation& call, long number) const {
    CallStarted started;
    started.object = call.object.name();
    started.method = call.method;
    started.in = call.in();
    if (call.isSecret) started.in.assign(started.in.size(), Json("***"));
    {
        const std::lock_guard lock(mutex_);
        started.position = position_;
    }
    started.number = number;
    started.interfaceName = call.interfaceName;
    started.isCompared = isCompared(call.treatment);
    return started;
}

HRESULT Session::fail(const Invocation& call, long number, HRESULT result,
                      const std::wstring& text) {
    tell([&] { return started(call, number); });
    tell([&] {
        return CallEnded{.number = number,
                         .result = static_cast<std::uint32_t>(result),
                         .error = PublishedError{toText(text), toText(kSource),
                                                 com::narrow(com::guidText(call.interfaceId))}};
    });
    call.clear();
    return com::publish(result, text, call.interfaceId, kSource);
}

HRESULT Session::forward(const Invocation& call, long number, DWORD& lastError) {
    tell([&] { return started(call, number); });
    const HRESULT result = forward(call, lastError);

    const com::ComPtr<IErrorInfo> info = takeErrorInfo(result, call);
    tell([&] {
        CallEnded ended{.number = number, .result = static_cast<std::uint32_t>(result)};
        if (SUCCEEDED(result)) ended.out = call.out();
        if (info) ended.error = publishedError(*info.Get());
        if (call.treatment == Treatment::kConnecting) ended.lastError = lastError;
        return ended;
    });
    if (FAILED(result)) SetErrorInfo(0, info.Get());
    return result;
}

HRESULT Session::forward(const Invocation& call, DWORD& lastError) {
    std::optional<com::Scoped<const Invocation*>> current;
    if (lanes_.thread() == 0) current.emplace(current_, &call);
    SetLastError(lastError);
    const HRESULT result = com::guard(call.interfaceId, kSource, call.forward);
    lastError = GetLastError();
    return result;
}

HRESULT Session::answer(const Invocation& call, long number, DWORD& lastError) {
    call.clear();
    if (isClosed_) throw com::Error(CO_E_OBJNOTCONNECTED, L"The replay has been closed");
    CallEnded ended;
    try {
        ended = replay_->call(started(call, number), ruleOf(call.treatment), lanes_.thread());
    } catch (const Difference& difference) {
        throw com::Error(KELTRACE_E_DIFFERENCE, widened(difference.what()));
    }
    const HRESULT result = static_cast<HRESULT>(ended.result);
    if (ended.lastError) lastError = *ended.lastError;
    if (!ended.out.empty()) call.give(ended.out);
    if (FAILED(result)) publishAgain(result, ended.error);
    return result;
}

// The host must not notice that its calls cannot be told: it hears of it from close().
template <class MakeWhat>
void Session::tell(MakeWhat&& makeWhat) noexcept {
    if (!isRecording_) return;
    const DWORD lastError = GetLastError();
    try {
        Event event{0, makeWhat(), lanes_.here()};
        const std::lock_guard lock(mutex_);
        if (recorder_ && SUCCEEDED(recordingFailure_)) recorder_->write(std::move(event));
    } catch (...) {
        const std::lock_guard lock(mutex_);
        recordingFailure_ = com::codeOfCurrentException();
    }
    SetLastError(lastError);
}

void Session::tellShown(const TracedObject& object, const std::wstring& text) noexcept {
    tell([&] {
        const bool isKnown = lanes_.thread() == 0 && current_;
        const std::string_view method = isKnown ? current_->method : "";
        return Shown{object.name(), toText(text),
                     method == "Echo" || method == "EchoConnectionInfo"};
    });
}

void Session::tellScript(const std::string& object, std::wstring_view script) noexcept {
    tell([&] { return CallbackStarted{object, toText(script)}; });
}

void Session::tellScriptEnd(HRESULT result) noexcept {
    tell([&] { return CallbackEnded{static_cast<std::uint32_t>(result)}; });
}

void Session::tellEvent(const std::function<EventFired()>& make) noexcept {
    tell(make);
}

void Session::tellEventEnd(const std::function<EventAnswered()>& make) noexcept {
    tell(make);
}

void Session::tellFile(const std::function<FilePiece()>& make) noexcept {
    tell(make);
}

bool Session::takeRoomForFile(std::int64_t size) {
    const std::lock_guard lock(mutex_);
    if (size > roomForFiles_) return false;
    roomForFiles_ -= size;
    return true;
}

bool Session::tells(const TracedObject& object, std::string_view method) const {
    return replay_ && replay_->tells(object.name(), method);
}

}  // namespace kel::trace
