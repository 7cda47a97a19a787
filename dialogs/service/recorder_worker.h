#pragma once
// Downloads and formats, one at a time, while the dialog goes on.

#include <windows.h>

#include <memory>
#include <optional>

#include "com/passed.h"
#include "com/text.h"
#include "com/unique_handle.h"
#include "dialogs/service/recorder_board.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

// Belongs to the dialog's thread. A recorder that is agile is called on a thread of its own; any
// other on the dialog's, which does not get further then unless the recorder runs its messages. So
// is an agile one where the link's collections can neither be read nor be passed elsewhere.
class RecorderWorker {
public:
    // Posted to the dialog, which calls runHere() then, or as soon as nothing on its stack waits
    // for the user or the recorder.
    static constexpr UINT kRunHereMessage = WM_APP + 1;

    RecorderWorker(com::ComPtr<IRecorderAccess> recorder, std::shared_ptr<RecorderBoard> board);
    // Waits for the thread's end.
    ~RecorderWorker() { wait(); }
    RecorderWorker(const RecorderWorker&) = delete;
    RecorderWorker& operator=(const RecorderWorker&) = delete;

    // Starts what the board says; its end is news on the board, after which wait() comes before the
    // next start. False where it cannot be started. Throws com::Error.
    bool start(com::ComPtr<ICollection> selection, const std::wstring& folder);

    void runHere();
    bool isRunningHere() const { return isRunningHere_; }
    // What has not begun to run here never does.
    void withdraw() noexcept;

    // Waits until nothing runs on another thread. Meanwhile this one takes what others send and
    // call, but no input.
    void wait() noexcept;

private:
    struct ThreadTraits {
        using Type = HANDLE;
        static Type none() { return nullptr; }
        static void close(Type handle) { CloseHandle(handle); }
    };

    bool pass();
    static DWORD WINAPI threadProcedure(void* worker);
    void runOnThread() noexcept;
    void tellEnd() noexcept;
    template <class Work>
    void attempt(Work&& work) noexcept;
    void work(const com::ComPtr<IRecorderAccess>& recorder,
              const com::ComPtr<ICollection>& selection);

    com::ComPtr<IRecorderAccess> recorder_;
    std::shared_ptr<RecorderBoard> board_;
    const bool isAgile_;
    bool isDueHere_ = false;
    bool isRunningHere_ = false;

    com::UniqueHandle<ThreadTraits> thread_;
    // What the thread is given.
    com::ComPtr<ICollection> selection_;
    com::Bstr folder_;
    std::optional<com::Passed<IRecorderAccess>> passedRecorder_;
    std::optional<com::Passed<ICollection>> passedSelection_;
};

}  // namespace kel::service
