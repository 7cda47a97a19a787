// The library's entry points: the only exports.
#include <windows.h>

#include <unknwn.h>

#include "com/class_table.h"
#include "com/error.h"
#include "com/module.h"
#include "hosts/trace/echo_relay.h"
#include "hosts/trace/trace_session.h"

namespace {

using namespace kel;

com::ClassRow table[] = {{L"TraceSession", &trace::kTraceSessionClass, 0,
                          com::rowCreator<com::createInstance<trace::TraceSession>>}};

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) {
        return SUCCEEDED(com::guard(GUID_NULL, nullptr, [&] { com::attachModule(instance); }));
    }
    // When the whole process ends, other libraries may be gone already: nothing is called.
    if (reason == DLL_PROCESS_DETACH && !processEnds) {
        trace::unregisterEchoRelays();
        com::releaseFactories(table);
        com::detachModule();
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID identifier, REFIID iid, void** result) {
    return com::classObject(table, identifier, iid, result);
}

STDAPI DllCanUnloadNow() {
    return com::moduleLocks() == 0 ? S_OK : S_FALSE;
}
