// The library's entry points: the only exports.
#include <windows.h>

#include <unknwn.h>

#include "bench/link/class_table.h"
#include "bench/link/registration.h"
#include "com/class_table.h"
#include "com/error.h"
#include "com/module.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) {
        return SUCCEEDED(
            kel::com::guard(GUID_NULL, nullptr, [&] { kel::com::attachModule(instance); }));
    }
    // When the whole process ends, other libraries may be gone already: nothing is called.
    if (reason == DLL_PROCESS_DETACH && !processEnds) {
        kel::com::releaseFactories(kel::bench::classTable());
        kel::com::detachModule();
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID identifier, REFIID iid, void** result) {
    return kel::com::classObject(kel::bench::classTable(), identifier, iid, result);
}

STDAPI DllCanUnloadNow() {
    return kel::com::moduleLocks() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    return kel::com::guard(GUID_NULL, nullptr,
                           [] { kel::bench::registerClasses(kel::bench::classTable()); });
}

STDAPI DllUnregisterServer() {
    return kel::com::guard(GUID_NULL, nullptr,
                           [] { kel::bench::unregisterClasses(kel::bench::classTable()); });
}
