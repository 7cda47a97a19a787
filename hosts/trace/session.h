#pragma once
// The session: every call on a traced object goes through it.

#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "hosts/trace/KelTrace.h"
#include "hosts/trace/failure_plan.h"
#include "hosts/trace/invocation.h"
#include "hosts/trace/lanes.h"
#include "hosts/trace/model/replay.h"
#include "hosts/trace/object_table.h"
#include "hosts/trace/recorder.h"
#include "hosts/trace/stage.h"

namespace kel::trace {

// A recording holds files of so many bytes in all.
inline constexpr std::int64_t kRoomForFiles = std::int64_t{32} << 20;

// Lives as long as its traced objects. Opened and closed on one thread; calls come on any, to
// objects that may be called there, and nest: each one may run the host's message loop. No lock is
// held while anything else is called.
class Session : public std::enable_shared_from_this<Session> {
public:
    Session();

    // Both throw com::Error, also when there is a recording or a replay already.
    void record(const std::wstring& path);
    void replay(const std::wstring& path, double speed);

    // Ends recording or replay. Throws com::Error when not everything could be recorded.
    void close();

    bool isReplay() const { return replay_.has_value(); }

    // Tells calls to a watcher, to none for null.
    void watch(ITraceWatcher* watcher);

    // Makes a call: counts it, tells the watcher, lets it fail, answers it from the recording or
    // forwards it, and tells it. Leaves the thread's last error and error info as the called object
    // did.
    HRESULT perform(const Invocation& call) noexcept;

    // The echo of an object showed a text.
    void tellShown(const TracedObject& object, const std::wstring& text) noexcept;

    // The link runs a script, or ended it.
    void tellScript(const std::string& object, std::wstring_view script) noexcept;
    void tellScriptEnd(HRESULT result) noexcept;

    // An object fires an event at one of its sinks, or has been answered.
    void tellEvent(const std::function<EventFired()>& make) noexcept;
    void tellEventEnd(const std::function<EventAnswered()>& make) noexcept;

    // A call leaves a piece of a file.
    void tellFile(const std::function<FilePiece()>& make) noexcept;
    bool isRecording() const { return isRecording_; }
    // True where a recording still has room for so many bytes of files, which are taken then.
    bool takeRoomForFile(std::int64_t size);

    // In a replay: whether a method of an object was ever called.
    bool tells(const TracedObject& object, std::string_view method) const;

    ObjectTable& objects() { return objects_; }
    FailurePlan& failures() { return failures_; }
    void setPosition(Position position);
    long callCount() const { return calls_; }
    Lanes& lanes() { return lanes_; }
    std::string difference() const;
    std::size_t callsLeft() const;

private:
    HRESULT decide(const Invocation& call, DWORD& lastError);
    HRESULT askWatcher(const Invocation& call, std::wstring& refusal);
    HRESULT fail(const Invocation& call, long number, HRESULT result, const std::wstring& text);
    HRESULT forward(const Invocation& call, long number, DWORD& lastError);
    HRESULT forward(const Invocation& call, DWORD& lastError);
    HRESULT answer(const Invocation& call, long number, DWORD& lastError);
    void requireNothing() const;
    CallStarted started(const Invocation& call, long number) const;
    template <class MakeWhat>
    void tell(MakeWhat&& makeWhat) noexcept;

    ObjectTable objects_;
    FailurePlan failures_;
    Lanes lanes_;
    std::atomic<long> calls_ = 0;
    // The innermost call that is being forwarded on the session's thread.
    const Invocation* current_ = nullptr;
    LinkStage stage_;
    std::optional<Replay> replay_;
    std::atomic<bool> isRecording_ = false;
    std::atomic<bool> isClosed_ = false;

    mutable std::mutex mutex_;  // of what follows
    Position position_;
    com::ComPtr<ITraceWatcher> watcher_;
    std::optional<Recorder> recorder_;
    HRESULT recordingFailure_ = S_OK;
    std::int64_t roomForFiles_ = kRoomForFiles;
};

}  // namespace kel::trace
