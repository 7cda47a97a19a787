#pragma once
// What the recorder dialog, its worker and the recorder's events know of one another.

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "dialogs/service/model/recorder_texts.h"

namespace kel::service {

// Sent to the dialog with the name of a file: it asks the user and answers with a ReplaceAnswer.
// Registered under the name "ConfirmFileReplace".
UINT confirmReplaceMessage();

enum class ReplaceAnswer { No = 0, Yes = 1, YesToAll = 2 };

struct RecorderProgress {
    std::uint32_t elapsed = 0;
    std::uint32_t done = 0;
    std::uint32_t total = 0;
};

// What the dialog has not shown yet; of each kind the last.
struct RecorderNews {
    std::optional<std::wstring> status;
    std::optional<RecorderProgress> progress;
    std::optional<std::uint32_t> finishedAfter;  // milliseconds
    bool hasEnded = false;
};

// Used on any thread. Outlives the dialog where the recorder keeps its events longer.
class RecorderBoard {
public:
    // Posted to the dialog when there is news.
    static constexpr UINT kNewsMessage = WM_APP;

    std::atomic<Operation> operation = Operation::None;
    std::atomic<bool> isCancelling = false;
    std::atomic<bool> replacesAll = false;
    std::atomic<DWORD> start = 0;  // tick of the running operation
    // The dialog's, null while there is none.
    std::atomic<HWND> window = nullptr;

    std::uint32_t elapsed() const { return GetTickCount() - start; }

    // Writes news down: tell([](RecorderNews& news) { news.hasEnded = true; }).
    template <class Write>
    void tell(Write&& write) {
        const std::lock_guard lock(mutex_);
        write(news_);
        // One message is enough for everything that is waiting.
        if (window && !isPosted_) isPosted_ = PostMessageW(window, kNewsMessage, 0, 0) != 0;
    }

    RecorderNews take() {
        const std::lock_guard lock(mutex_);
        isPosted_ = false;
        return std::exchange(news_, {});
    }

private:
    std::mutex mutex_;
    RecorderNews news_;
    bool isPosted_ = false;
};

}  // namespace kel::service
