#include "dialogs/service/recorder_worker.h"

#include "com/apartment.h"
#include "com/module.h"
#include "com/scoped.h"

namespace kel::service {
namespace {

constexpr DWORD kStep = 10;  // milliseconds
constexpr int kStepsToNextAbort = 50;

// Waits for a step, in which this thread takes what others send and call.
bool hasEnded(HANDLE thread) {
    // Objects of this thread that are called from others get their calls as posted messages of
    // COM's own; those it takes too.
    DWORD index = 0;
    const HRESULT code = CoWaitForMultipleHandles(0, kStep, 1, &thread, &index);
    if (code == S_OK || code == RPC_S_CALLPENDING) return code == S_OK;
    // Where COM cannot wait the thread's end is seen all the same.
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    return MsgWaitForMultipleObjects(1, &thread, FALSE, kStep, QS_SENDMESSAGE) == WAIT_OBJECT_0;
}

}  // namespace

RecorderWorker::RecorderWorker(com::ComPtr<IRecorderAccess> recorder,
                               std::shared_ptr<RecorderBoard> board)
    : recorder_(std::move(recorder)),
      board_(std::move(board)),
      isAgile_(com::isAgile(recorder_.Get())) {}

bool RecorderWorker::start(com::ComPtr<ICollection> selection, const std::wstring& folder) {
    selection_ = std::move(selection);
    folder_ = com::Bstr(folder);
    if (!isAgile_ || !pass()) {
        isDueHere_ = PostMessageW(board_->window, kRunHereMessage, 0, 0) != 0;
        return isDueHere_;
    }
    com::lockModule();
    thread_ = com::UniqueHandle<ThreadTraits>(
        CreateThread(nullptr, 0, threadProcedure, this, 0, nullptr));
    if (!thread_) com::unlockModule();
    return static_cast<bool>(thread_);
}

// False where the selection can be read on this thread only.
bool RecorderWorker::pass() {
    passedRecorder_.emplace(recorder_);
    try {
        if (selection_) passedSelection_.emplace(selection_);
        return true;
    } catch (const com::Error&) {
        return false;
    }
}

DWORD WINAPI RecorderWorker::threadProcedure(void* worker) {
    static_cast<RecorderWorker*>(worker)->runOnThread();
    // The code that is left is safe: the dialog waits for the thread's very end.
    com::unlockModule();
    return 0;
}

void RecorderWorker::runOnThread() noexcept {
    attempt([&] {
        // The thread is nobody's: agile objects are called there directly.
        const com::Apartment apartment(COINIT_MULTITHREADED);
        com::ComPtr<ICollection> selection;
        if (passedSelection_) selection = passedSelection_->fetch();
        work(passedRecorder_->fetch(), selection);
    });
}

void RecorderWorker::runHere() {
    if (!std::exchange(isDueHere_, false)) return;
    const com::Scoped running(isRunningHere_, true);
    attempt([&] { work(recorder_, selection_); });
}

void RecorderWorker::withdraw() noexcept {
    if (std::exchange(isDueHere_, false)) tellEnd();
}

void RecorderWorker::tellEnd() noexcept {
    board_->operation = Operation::None;
    board_->tell([](RecorderNews& news) { news.hasEnded = true; });
}

template <class Work>
void RecorderWorker::attempt(Work&& work) noexcept {
    try {
        work();
    } catch (...) {
        // Without memory for the text there is none.
        try {
            const std::wstring text = com::textOfCurrentException();
            board_->tell([&](RecorderNews& news) { news.status = text; });
        } catch (const std::bad_alloc&) {
        }
    }
    tellEnd();
}

void RecorderWorker::work(const com::ComPtr<IRecorderAccess>& recorder,
                          const com::ComPtr<ICollection>& selection) {
    // What the user aborted answers false too: that is no failure.
    VARIANT_BOOL isComplete = VARIANT_FALSE;
    board_->start = GetTickCount();
    if (board_->operation == Operation::Format) {
        com::check(recorder->Format(&isComplete), recorder);
        return;
    }
    board_->replacesAll = false;
    com::check(recorder->Download(selection.Get(), folder_.get(), &isComplete), recorder);
}

void RecorderWorker::wait() noexcept {
    if (thread_) {
        for (int step = 1; !hasEnded(thread_.get()); ++step) {
            // What was aborted before the recorder had begun may have begun all the same.
            if (board_->isCancelling && step % kStepsToNextAbort == 0) recorder_->Abort();
        }
        thread_ = {};
    }
    passedRecorder_.reset();
    passedSelection_.reset();
    selection_ = nullptr;
}

}  // namespace kel::service
