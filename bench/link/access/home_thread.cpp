#include "bench/link/access/home_thread.h"

#include <exception>
#include <memory>

#include "com/error.h"
#include "com/module.h"

namespace kel::bench {
namespace {

constexpr UINT kRun = WM_APP;
constexpr UINT kRunLater = WM_APP + 1;

struct Work {
    const std::function<void()>& function;
    bool done = false;
    std::exception_ptr failure = nullptr;
};

struct Later {
    explicit Later(std::function<void()> work) : function(std::move(work)) { com::lockModule(); }
    ~Later() { com::unlockModule(); }
    Later(const Later&) = delete;
    Later& operator=(const Later&) = delete;

    const std::function<void()> function;
};

}  // namespace

HomeThread::HomeThread()
    // A window of a class that exists: one of our own would outlive the library.
    : window_(
          CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    if (!window_) throw com::lastError();
    SetWindowLongPtrW(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
}

void HomeThread::run(const std::function<void()>& work) const {
    if (isCurrent()) return work();
    Work item{work};
    SendMessageW(window_.get(), kRun, 0, reinterpret_cast<LPARAM>(&item));
    if (item.failure) std::rethrow_exception(item.failure);
    if (!item.done) throw com::Error(RPC_E_SERVER_DIED, L"The thread of the link has ended");
}

bool HomeThread::post(std::function<void()> work) const {
    // What posts may be the last object of the library, which has to stay until this is done.
    auto item = std::make_unique<Later>(std::move(work));
    if (!PostMessageW(window_.get(), kRunLater, 0, reinterpret_cast<LPARAM>(item.get()))) {
        return false;
    }
    item.release();
    return true;
}

LRESULT HomeThread::procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == kRun) {
        Work& item = *reinterpret_cast<Work*>(second);
        try {
            item.function();
        } catch (...) {
            item.failure = std::current_exception();
        }
        item.done = true;
        return 0;
    }
    if (message == kRunLater) {
        const std::unique_ptr<Later> item(reinterpret_cast<Later*>(second));
        item->function();
        return 0;
    }
    return DefWindowProcW(window, message, first, second);
}

}  // namespace kel::bench
