#include "tests/wine/support/resource_counts.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <winternl.h>

#include <cstdlib>
#include <ostream>
#include <vector>

#include "com/error.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

std::size_t countMemory() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr) + 8);
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    std::size_t bytes = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heap);
        while (HeapWalk(heap, &entry))
            bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
        HeapUnlock(heap);
    }
    return bytes;
}

BOOL CALLBACK countOne(HWND, LPARAM count) {
    ++*reinterpret_cast<std::size_t*>(count);
    return TRUE;
}

BOOL CALLBACK countWithChildren(HWND window, LPARAM count) {
    countOne(window, count);
    EnumChildWindows(window, countOne, count);
    return TRUE;
}

std::size_t countWindows() {
    std::size_t count = 0;
    EnumThreadWindows(GetCurrentThreadId(), countWithChildren, reinterpret_cast<LPARAM>(&count));
    return count;
}

// Wine's GetGuiResources counts nothing: there the handle table itself is read.
std::size_t countGraphicsObjects() {
    if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) return count;
    struct Entry {
        ULONGLONG object;
        ULONG owner;
        USHORT unique;
        UCHAR type;
        UCHAR flags;
        ULONGLONG userPointer;
    };
    constexpr std::size_t kEntries = 0x4000;
    constexpr std::size_t kTableInBlock = 0x94;
    const auto* block = reinterpret_cast<const char*>(NtCurrentTeb()->ProcessEnvironmentBlock);
    const auto* table = *reinterpret_cast<const Entry* const*>(block + kTableInBlock);
    if (!table) throw com::Error(E_UNEXPECTED, L"there is no table of graphics objects");
    std::size_t count = 0;
    for (std::size_t i = 0; i < kEntries; ++i)
        count += table[i].type != 0;
    return count;
}

std::size_t countHandles() {
    struct Handle {
        ULONG process;
        UCHAR type;
        UCHAR flags;
        USHORT value;
        PVOID object;
        ULONG access;
    };
    constexpr auto kHandles = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    constexpr NTSTATUS kTooSmall = static_cast<NTSTATUS>(0xC0000004);
    auto* const query = exportOf<decltype(NtQuerySystemInformation)>(GetModuleHandleW(L"ntdll.dll"),
                                                                     "NtQuerySystemInformation");
    std::vector<ULONG> buffer(1 << 14);
    NTSTATUS status = kTooSmall;
    while ((status = query(kHandles, buffer.data(), static_cast<ULONG>(buffer.size() * 4),
                           nullptr)) == kTooSmall)
        buffer.resize(buffer.size() * 2);
    if (status < 0) throw com::Error(HRESULT_FROM_NT(status));
    const auto* handles = reinterpret_cast<const Handle*>(buffer.data() + 1);
    std::size_t count = 0;
    for (ULONG i = 0; i < buffer[0]; ++i)
        count += handles[i].process == GetCurrentProcessId();
    return count;
}

}  // namespace

void PrintTo(const ResourceCounts& counts, std::ostream* stream) {
    *stream << counts.memory << " bytes, " << counts.windows << " windows, "
            << counts.graphicsObjects << " graphics objects, " << counts.handles << " handles";
}

ResourceCounts countResources() {
    return {countMemory(), countWindows(), countGraphicsObjects(), countHandles()};
}

void expectNothingLeft(const std::function<void()>& deed) {
    const auto repeat = [&](int times) {
        for (int i = 0; i < times; ++i)
            deed();
    };
    // The platform keeps some of what it makes for the first ones.
    repeat(4);
    const char* const wanted = std::getenv("KEL_OPENING_ROUNDS");
    // A device context more in the platform's store, because two threads wanted one at a time, is
    // no leak; what grows every time is.
    ResourceCounts before, after;
    for (int attempt = 0; attempt < 3; ++attempt) {
        before = countResources();
        repeat(wanted ? std::atoi(wanted) : 20);
        after = countResources();
        if (after == before) return;
    }
    EXPECT_EQ(after, before);
}

}  // namespace kel::test
