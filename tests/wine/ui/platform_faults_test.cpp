// Every window of the library on a platform that fails: one call after the other does not do what
// it is asked for.
#include <gtest/gtest.h>

#include <commctrl.h>

#include <atomic>
#include <cstdlib>

#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/scene.h"
#include "ui/atl.h"

namespace kel::test {
namespace {

// So many calls of the patched function go well; then one fails, and those that follow go well.
std::atomic<int> callsThatGoWell;

bool failsNow() {
    return callsThatGoWell-- == 0;
}

void* allocate(std::size_t size) {
    return failsNow() ? nullptr : std::malloc(size);
}
BSTR WINAPI allocateText(const OLECHAR* text, UINT size) {
    return failsNow() ? nullptr : SysAllocStringLen(text, size);
}
LSTATUS WINAPI createKey(HKEY key, LPCSTR name, DWORD reserved, LPSTR kind, DWORD options,
                         REGSAM access, SECURITY_ATTRIBUTES* security, HKEY* result,
                         DWORD* disposition) {
    if (failsNow()) return ERROR_ACCESS_DENIED;
    return RegCreateKeyExA(key, name, reserved, kind, options, access, security, result,
                           disposition);
}
LSTATUS WINAPI queryValue(HKEY key, LPCSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                          DWORD* size) {
    if (failsNow()) return ERROR_ACCESS_DENIED;
    return RegQueryValueExA(key, name, reserved, type, data, size);
}
LSTATUS WINAPI setValue(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                        DWORD size) {
    if (failsNow()) return ERROR_ACCESS_DENIED;
    return RegSetValueExA(key, name, reserved, type, data, size);
}
HRESULT WINAPI createInstance(REFCLSID identifier, IUnknown* outer, DWORD context, REFIID iid,
                              void** result) {
    *result = nullptr;
    if (failsNow()) return REGDB_E_CLASSNOTREG;
    return CoCreateInstance(identifier, outer, context, iid, result);
}
HRESULT WINAPI createErrorInfo(ICreateErrorInfo** result) {
    return failsNow() ? E_OUTOFMEMORY : CreateErrorInfo(result);
}
INT_PTR WINAPI runDialog(HINSTANCE instance, LPCDLGTEMPLATEW description, HWND owner,
                         DLGPROC procedure, LPARAM value) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    if (failsNow()) return -1;
    return DialogBoxIndirectParamW(instance, description, owner, procedure, value);
}
INT_PTR WINAPI runDialogWithControls(HINSTANCE instance, LPCSTR name, HWND owner, DLGPROC procedure,
                                     LPARAM value) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    if (failsNow()) return -1;
    return AtlAxDialogBoxA(instance, name, owner, procedure, value);
}
HWND WINAPI createDialog(HINSTANCE instance, LPCDLGTEMPLATEW description, HWND owner,
                         DLGPROC procedure, LPARAM value) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    if (failsNow()) return nullptr;
    return CreateDialogIndirectParamW(instance, description, owner, procedure, value);
}
HWND WINAPI createPart(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                       LPARAM value) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    if (failsNow()) return nullptr;
    return CreateDialogParamW(instance, name, owner, procedure, value);
}
UINT_PTR WINAPI setTimer(HWND window, UINT_PTR identifier, UINT interval, TIMERPROC procedure) {
    return failsNow() ? 0 : SetTimer(window, identifier, interval, procedure);
}
BOOL WINAPI subclass(HWND window, SUBCLASSPROC procedure, UINT_PTR identifier, DWORD_PTR value) {
    return failsNow() ? FALSE : SetWindowSubclass(window, procedure, identifier, value);
}
HFONT WINAPI createFont(const LOGFONTW* description) {
    return failsNow() ? nullptr : CreateFontIndirectW(description);
}
HDC WINAPI createContext(HDC like) {
    return failsNow() ? nullptr : CreateCompatibleDC(like);
}

const struct {
    const char* function;
    void* replacement;
} kFaults[] = {
    {"malloc", reinterpret_cast<void*>(allocate)},
    {"SysAllocStringLen", reinterpret_cast<void*>(allocateText)},
    {"RegCreateKeyExA", reinterpret_cast<void*>(createKey)},
    {"RegQueryValueExA", reinterpret_cast<void*>(queryValue)},
    {"RegSetValueExA", reinterpret_cast<void*>(setValue)},
    {"CoCreateInstance", reinterpret_cast<void*>(createInstance)},
    {"CreateErrorInfo", reinterpret_cast<void*>(createErrorInfo)},
    {"DialogBoxIndirectParamW", reinterpret_cast<void*>(runDialog)},
    {"AtlAxDialogBoxA", reinterpret_cast<void*>(runDialogWithControls)},
    {"CreateDialogIndirectParamW", reinterpret_cast<void*>(createDialog)},
    {"CreateDialogParamW", reinterpret_cast<void*>(createPart)},
    {"SetTimer", reinterpret_cast<void*>(setTimer)},
    {"SetWindowSubclass", reinterpret_cast<void*>(subclass)},
    {"CreateFontIndirectW", reinterpret_cast<void*>(createFont)},
    {"CreateCompatibleDC", reinterpret_cast<void*>(createContext)},
};

// Every call where somebody has the time, else ever fewer of the later ones.
int next(int call) {
    if (std::getenv("KEL_EVERY_FAULT")) return call + 1;
    return call == 0 ? 1 : call * 5;
}

class PlatformFaultsTest : public testing::TestWithParam<Scene> {};

TEST_P(PlatformFaultsTest, AreSurvived) {
    playOrNot(GetParam());
    int failures = 0;
    for (const auto& fault : kFaults) {
        const ImportPatch patch(kelUtils().module(), fault.function, fault.replacement);
        for (int call = 0;; call = next(call)) {
            callsThatGoWell = call;
            playOrNot(GetParam());
            SCOPED_TRACE(fault.function + (" " + std::to_string(call)));
            EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
            if (callsThatGoWell >= 0) break;
            ++failures;
        }
    }
    EXPECT_GT(failures, 0);
    // Nothing is left behind that the next one would stumble over.
    bool isSeen = false;
    play(GetParam(), [&](HWND) { isSeen = true; });
    EXPECT_TRUE(isSeen);
}

INSTANTIATE_TEST_SUITE_P(Windows, PlatformFaultsTest, testing::ValuesIn(readOpenings()));

}  // namespace
}  // namespace kel::test
