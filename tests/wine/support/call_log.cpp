#include "tests/wine/support/call_log.h"

#include <map>
#include <set>

#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"
#include "tests/support/cases.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

// Doubles are wrapped one by one; the session must not make classes of its own.
HRESULT WINAPI findNoClass(REFCLSID, DWORD, COSERVERINFO*, REFIID, void**) {
    return REGDB_E_CLASSNOTREG;
}

// How arguments are written that are neither numbers nor quoted texts.
const std::map<std::string, const char*, std::less<>> kWords = {
    {"SendCommand", "OK"}, {"WriteString", "CR"}, {"WaitForString", "stop"}};
const std::set<std::string, std::less<>> kUnquoted = {"OpenPort", "PortExists", "ConnectTo",
                                                      "put_Port", "Download"};

const std::set<std::string, std::less<>> kFetches = {
    "get_Port", "get_Preprocessor", "get_NewData",   "get_BytesInReadBuffer",
    "get_Busy", "get_Calibrating",  "QueryInterface"};

std::string argument(const std::string& method, const VARIANT& value) {
    const auto word = kWords.find(method);
    // A traced link has a name, which depends on what was traced before.
    if (method == "Attach") return com::view(value.bstrVal) == L"foreign" ? "foreign" : "";
    if (value.vt == VT_BSTR)
        return kUnquoted.contains(method) ? com::narrow(value.bstrVal)
                                          : '"' + com::narrow(value.bstrVal) + '"';
    if (value.vt == VT_EMPTY) return "nothing";
    if (value.vt == VT_BOOL && word != kWords.end()) return value.boolVal ? word->second : "";
    return std::to_string(value.vt == VT_BOOL ? value.boolVal : value.lVal);
}

std::string notation(const std::string& method, const SAFEARRAY& arguments) {
    const bool isPut = method.starts_with("put_");
    std::string text = isPut || method.starts_with("get_") ? method.substr(4) : method;
    if (isPut) text += " =";
    const auto* values = static_cast<const VARIANT*>(arguments.pvData);
    // Of a script file its contents are told besides.
    const ULONG count = method == "RunCommandFile" ? 1 : arguments.rgsabound[0].cElements;
    for (ULONG i = 0; i < count; ++i) {
        const std::string told = argument(method, values[i]);
        if (!told.empty()) text += " " + told;
    }
    return text;
}

}  // namespace

// Lives as long as the logs.
class SharedTrace {
public:
    static std::shared_ptr<SharedTrace> get() {
        static std::weak_ptr<SharedTrace> shared;
        std::shared_ptr<SharedTrace> trace = shared.lock();
        if (!trace) shared = trace = std::make_shared<SharedTrace>();
        return trace;
    }

    SharedTrace() {
        const ImportPatch classes(kelTrace().module(), "CoGetClassObject",
                                  reinterpret_cast<void*>(findNoClass));
        com::check(session->Watch(com::makeObject<Watcher>(*this).Get()), session);
    }
    ~SharedTrace() { session->Close(); }

    const com::ComPtr<ITraceSession> session =
        kelTrace().create<ITraceSession>(__uuidof(TraceSession));

    using Log = std::pair<CallLog*, std::string>;  // and what stands before its calls
    // Null for an object whose calls are not told.
    Log logOf(IUnknown* wrapper) {
        const std::lock_guard lock(mutex_);
        const auto found = logs_.find(wrapper);
        return found == logs_.end() ? Log() : found->second;
    }
    void tell(IUnknown* wrapper, const Log& log) {
        const std::lock_guard lock(mutex_);
        logs_[wrapper] = log;
    }
    void forget(CallLog* log) {
        const std::lock_guard lock(mutex_);
        std::erase_if(logs_, [&](const auto& entry) { return entry.second.first == log; });
    }

private:
    static void tellTo(CallLog& log, const std::string& call) { log.tell(call); }

    std::mutex mutex_;
    std::map<IUnknown*, Log> logs_;

    class Watcher final : public com::Object<Watcher, com::Plain<ITraceWatcher>> {
    public:
        static constexpr com::ClassDescription kClass{};
        explicit Watcher(SharedTrace& trace) : trace_(trace) {}

        STDMETHODIMP CallStarts(IUnknown* object, BSTR method, SAFEARRAY* arguments) override {
            return guarded<ITraceWatcher>([&] {
                const auto [log, prefix] = trace_.logOf(object);
                const std::string name = com::narrow(method);
                if (!log || (kFetches.contains(name) && !log->tellsFetches)) return;
                SharedTrace::tellTo(*log, prefix + notation(name, *arguments));
            });
        }

    private:
        SharedTrace& trace_;
    };
};

CallLog::CallLog() : trace_(SharedTrace::get()) {}

CallLog::~CallLog() {
    trace_->forget(this);
}

std::string CallLog::takeWork() {
    std::string work;
    const std::lock_guard lock(mutex_);
    for (const std::string& call : calls)
        if (call != "Sleep 1") work += escaped(call) + "\n";
    calls.clear();
    return work;
}

void CallLog::tell(const std::string& call) {
    {
        const std::lock_guard lock(mutex_);
        calls.push_back(call);
    }
    // It may replace itself.
    if (const auto hook = onCall) hook(call);
}

ITraceSession* CallLog::session() const {
    return trace_->session.Get();
}

long CallLog::callCount() const {
    long count = 0;
    com::check(session()->get_CallCount(&count));
    return count;
}

void CallLog::failCall(long number, HRESULT code) {
    com::check(session()->FailCall(number, code));
}

void CallLog::failMethod(const wchar_t* name, HRESULT code) {
    com::check(session()->FailMethod(com::Bstr(std::wstring_view(name)).get(), 1, code));
}

com::ComPtr<IUnknown> CallLog::wrap(IUnknown* inner, const std::string& prefix) {
    com::ComPtr<IUnknown> object;
    com::check(session()->Wrap(inner, &object), session());
    trace_->tell(object.Get(), {this, prefix});
    return object;
}

}  // namespace kel::test
