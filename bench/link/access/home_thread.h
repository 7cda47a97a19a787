#pragma once
// Calls from other threads to the thread on which an object lives.

#include <windows.h>

#include <functional>

#include "com/unique_handle.h"

namespace kel::bench {

// Runs functions on the thread that made it, which must take sent messages meanwhile, as the thread
// of an apartment has to. Destroyed on that thread too.
class HomeThread {
public:
    HomeThread();
    HomeThread(const HomeThread&) = delete;
    HomeThread& operator=(const HomeThread&) = delete;

    bool isCurrent() const { return GetCurrentThreadId() == thread_; }

    // Runs a function there and waits for it; throws what it throws, and com::Error when the thread
    // has ended.
    void run(const std::function<void()>& work) const;

    // Runs a function there when the thread comes to it. False when the thread has ended.
    bool post(std::function<void()> work) const;

private:
    struct WindowTraits {
        using Type = HWND;
        static Type none() { return nullptr; }
        static void close(Type window) { DestroyWindow(window); }
    };

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second);

    DWORD thread_ = GetCurrentThreadId();
    com::UniqueHandle<WindowTraits> window_;
};

}  // namespace kel::bench
