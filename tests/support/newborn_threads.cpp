// Part of every test program for Windows. Wine 8 crashes when a process ends while one of its
// threads is just coming into being. GoogleTest starts such a thread with its first assertion, and
// a short test is over before it lives; so the program ends only when all its threads have begun.
#include <windows.h>

#include <tlhelp32.h>

#include <atomic>

namespace {

std::atomic<int> livingThreads = 1;

// The loader calls this in each thread as it begins and ends.
void WINAPI countThread(void*, DWORD reason, void*) {
    if (reason == DLL_THREAD_ATTACH) ++livingThreads;
    if (reason == DLL_THREAD_DETACH) --livingThreads;
}

// Threads of this process that exist at all, those that have not begun included.
int existingThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return 0;
    int count = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL found = Thread32First(snapshot, &entry); found;
         found = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    }
    CloseHandle(snapshot);
    return count;
}

struct WaitAtExit {
    ~WaitAtExit() {
        // A thread that was created suspended never begins: then the wait has an end.
        for (int i = 0; i < 1000 && existingThreads() > livingThreads; ++i)
            Sleep(1);
    }
} waitAtExit;

// The tool chain's loader table: what stands in this section is called for each thread.
[[gnu::section(".CRT$XLM"), gnu::used]] PIMAGE_TLS_CALLBACK threadCallback = countThread;

}  // namespace
