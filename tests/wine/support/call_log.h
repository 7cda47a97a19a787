#pragma once
// What is called on the doubles of a test, as the trace link tells it, and failures on demand.

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "com/error.h"
#include "hosts/trace/KelTrace.h"

namespace kel::test {

class SharedTrace;

class CallLog {
public:
    CallLog();
    ~CallLog();
    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    // The traced object around a double, whose calls are told here with something before them.
    template <class Interface>
    com::ComPtr<Interface> around(IUnknown* inner, const std::string& prefix = {}) {
        com::ComPtr<Interface> object;
        com::check(wrap(inner, prefix).As(&object));
        return object;
    }

    // What was called, in order, with its arguments: "SendBreak 300", "BaudRate = 9600". Fetching
    // the port, the preprocessor or the recorder, and what is asked at every tick (for bytes that
    // wait, for new readings), is told on demand only. Not to be looked at while another thread
    // calls.
    std::vector<std::string> calls;
    bool tellsFetches = false;

    // The same on one line each, without the pause before every script line; control characters are
    // shown as escapes. Empties the log. Any thread.
    std::string takeWork();

    // Called inside each call that is told, before the double is, on the thread of the call. The
    // call fails as it throws.
    std::function<void(const std::string& call)> onCall;

    // The session of the trace link, which all logs of a moment share. It counts and fails calls,
    // also those that are not told.
    ITraceSession* session() const;
    long callCount() const;
    void failCall(long number, HRESULT code = E_ACCESSDENIED);
    void failMethod(const wchar_t* name, HRESULT code = E_ACCESSDENIED);

private:
    friend class SharedTrace;
    void tell(const std::string& call);
    com::ComPtr<IUnknown> wrap(IUnknown* inner, const std::string& prefix);

    const std::shared_ptr<SharedTrace> trace_;
    std::mutex mutex_;
};

}  // namespace kel::test
