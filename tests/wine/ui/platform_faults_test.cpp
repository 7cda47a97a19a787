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

// A function of the platform, and what it gives when it fails.
template <auto function, auto failure>
struct Failing;
template <class Result, class... Arguments, Result(WINAPI* function)(Arguments...), auto failure>
struct Failing<function, failure> {
    static Result WINAPI call(Arguments... arguments) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failsNow() ? static_cast<Result>(failure) : function(arguments...);
    }
};

void* allocate(std::size_t size) {
    return failsNow() ? nullptr : std::malloc(size);
}
HRESULT WINAPI createInstance(REFCLSID identifier, IUnknown* outer, DWORD context, REFIID iid,
                              void** result) {
    *result = nullptr;
    return failsNow() ? REGDB_E_CLASSNOTREG
                      : CoCreateInstance(identifier, outer, context, iid, result);
}

struct Fault {
    const char* function;
    void* replacement;
};
#define KEL_FAULT(function, failure)                                             \
    Fault {                                                                      \
#function, reinterpret_cast < void*>(Failing <&function, failure>::call) \
    }

const Fault kFaults[] = {
    {"malloc", reinterpret_cast<void*>(allocate)},
    {"CoCreateInstance", reinterpret_cast<void*>(createInstance)},
    KEL_FAULT(SysAllocStringLen, nullptr),
    KEL_FAULT(RegCreateKeyExA, ERROR_ACCESS_DENIED),
    KEL_FAULT(RegQueryValueExA, ERROR_ACCESS_DENIED),
    KEL_FAULT(RegSetValueExA, ERROR_ACCESS_DENIED),
    KEL_FAULT(CreateErrorInfo, E_OUTOFMEMORY),
    KEL_FAULT(DialogBoxIndirectParamW, -1),
    KEL_FAULT(AtlAxDialogBoxA, -1),
    KEL_FAULT(CreateDialogIndirectParamW, nullptr),
    KEL_FAULT(CreateDialogParamW, nullptr),
    KEL_FAULT(SetTimer, 0),
    KEL_FAULT(SetWindowSubclass, FALSE),
    KEL_FAULT(CreateFontIndirectW, nullptr),
    KEL_FAULT(CreateCompatibleDC, nullptr),
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
