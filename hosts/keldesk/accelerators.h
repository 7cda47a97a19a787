#pragma once
// The keys of the menu.

#include <windows.h>

namespace kel::keldesk {

// Makes them commands of a window as long as it lives, in every message loop of the thread: while a
// script runs, the messages are dispatched by the instrument link. One at a time.
class Accelerators {
public:
    // Throws com::Error.
    Accelerators(HWND window, WORD resource);
    ~Accelerators();
    Accelerators(const Accelerators&) = delete;
    Accelerators& operator=(const Accelerators&) = delete;

private:
    static LRESULT CALLBACK see(int code, WPARAM wide, LPARAM message);

    static Accelerators* present;
    HWND window_;
    HACCEL keys_;
    HHOOK hook_;
};

}  // namespace kel::keldesk
