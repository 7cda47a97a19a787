#pragma once
// What is called on the doubles of a test, as the trace link tells it, and failures on demand.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "com/error.h"
#include "hosts/trace/KelTrace.h"

namespace kel::test {

class SharedTrace;

class CallLog {
public:
    CallLog();
    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    // What was called, in order, with its arguments: "SendBreak 300", "BaudRate = 9600". Fetching
    // the port or the preprocessor and asking for bytes that wait is told on demand only.
    std::vector<std::string> calls;
    bool tellsFetches = false;

    // The same on one line each, without the pause before every script line; control characters are
    // shown as escapes. Empties the log.
    std::string takeWork();

    // Called inside each call that is told, before the double is. The call fails as it throws.
    std::function<void(const std::string& call)> onCall;

    // The session of the trace link, which all logs of a moment share. It counts and fails calls,
    // also those that are not told.
    ITraceSession* session() const;
    long callCount() const;
    void failCall(long number, HRESULT code = E_ACCESSDENIED);
    void failMethod(const wchar_t* name, HRESULT code = E_ACCESSDENIED);

private:
    template <class Interface>
    friend class Traced;
    friend class SharedTrace;

    const std::shared_ptr<SharedTrace> trace_;
};

// A double behind the trace link, whose calls are told in a log with something before them. Of the
// thread that makes it.
template <class Interface>
class Traced {
public:
    Traced(CallLog& log, IUnknown* inner, std::string prefix = {});
    ~Traced();
    Traced(const Traced&) = delete;
    Traced& operator=(const Traced&) = delete;

    Interface* get() const { return object_.Get(); }

private:
    const std::shared_ptr<SharedTrace> trace_;
    com::ComPtr<Interface> object_;
};

// As the above, without its type.
com::ComPtr<IUnknown> tellCalls(CallLog& log, IUnknown* inner, std::string prefix);
void tellNothing(SharedTrace& trace, IUnknown* object);

template <class Interface>
Traced<Interface>::Traced(CallLog& log, IUnknown* inner, std::string prefix) : trace_(log.trace_) {
    com::check(tellCalls(log, inner, std::move(prefix)).As(&object_));
}

template <class Interface>
Traced<Interface>::~Traced() {
    tellNothing(*trace_, object_.Get());
}

}  // namespace kel::test
