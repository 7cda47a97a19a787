// The library's entry points: the only exports.
#include <windows.h>

#include <unknwn.h>

#include "com/class_table.h"
#include "com/error.h"
#include "com/module.h"
#include "server/atl.h"
#include "server/class_table.h"
#include "server/registration.h"

namespace {

kel::server::AtlModule atlModule;

bool attach(HINSTANCE instance) {
    const HRESULT code = kel::com::guard(GUID_NULL, nullptr, [&] {
        kel::com::attachModule(instance);
        return kel::server::AtlModuleInit(&atlModule, nullptr, instance);
    });
    // Refused where the library carries thread-local data; the notifications then do no harm.
    DisableThreadLibraryCalls(instance);
    return SUCCEEDED(code);
}

void detach() {
    kel::com::releaseFactories(kel::server::classTable());
    kel::com::detachModule();
    kel::server::AtlModuleTerm(&atlModule);
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) return attach(instance);
    // When the whole process ends, other libraries may be gone already: nothing is called.
    if (reason == DLL_PROCESS_DETACH && !processEnds) detach();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID identifier, REFIID iid, void** result) {
    return kel::com::classObject(kel::server::classTable(), identifier, iid, result);
}

STDAPI DllCanUnloadNow() {
    return kel::com::moduleLocks() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    return kel::server::registerServer(atlModule, kel::server::classTable());
}

STDAPI DllUnregisterServer() {
    return kel::server::unregisterServer(atlModule, kel::server::classTable());
}
